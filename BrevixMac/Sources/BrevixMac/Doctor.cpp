// SPDX-License-Identifier: GPL-3.0-or-later
#include "Doctor.h"

#include "DoctorRules.h"

Doctor::Doctor(SessionProbe &probe, std::function<InstanceFacts()> instance, QString scheme)
    : m_probe(probe)
    , m_instance(std::move(instance))
    , m_scheme(std::move(scheme))
{
}

void Doctor::examine()
{
    if (m_isExamining)
        return;
    setExamining(true);
    detach(look(m_tasks.token()), "examining the session");
}

QCoro::Task<> Doctor::look(std::stop_token token)
{
    const SessionFacts session = co_await m_probe.examine(m_scheme);
    if (token.stop_requested())
        co_return;
    m_report = judge(session, m_instance());
    setExamining(false);
    Q_EMIT examined();
}

void Doctor::setExamining(bool isExamining)
{
    m_isExamining = isExamining;
    Q_EMIT isExaminingChanged();
}

DoctorReport Doctor::judge(const SessionFacts &session, const InstanceFacts &instance)
{
    DoctorReport report{.source = DoctorReport::Source::instance,
                        .session = DoctorRules::sessionName(session),
                        .rows = emptyRows()};
    if (!instance.isRunning)
        report.source = instance.hasSilentSibling ? DoctorReport::Source::silentInstance
                                                  : DoctorReport::Source::standalone;
    for (qsizetype i = 0; i < report.rows.size(); ++i) {
        const DoctorRules::Finding finding =
            DoctorRules::all().at(static_cast<size_t>(i)).find(session, instance);
        report.rows[i].state = finding.state;
        report.rows[i].reason = finding.reason;
        report.rows[i].fix = finding.fix;
    }
    return report;
}

QList<DoctorRow> Doctor::emptyRows()
{
    QList<DoctorRow> rows;
    for (const DoctorRules::Rule &rule : DoctorRules::all())
        rows.append({.id = QString::fromLatin1(rule.id),
                     .title = QString::fromLatin1(rule.title),
                     .reason = {},
                     .fix = {}});
    return rows;
}
