// SPDX-License-Identifier: GPL-3.0-or-later
#include "DoctorRows.h"

#include "Doctor.h"
#include "SettingsCard.h"
#include "SettingsRow.h"
#include "StatusChip.h"
#include "ThemedButton.h"

namespace {

const QString examineAgain = QStringLiteral("Examine Again");
const QString examining = QStringLiteral("Examining...");

struct Look
{
    StatusChip::Tint tint;
    const char *word;
    const char *symbol;
};

Look lookOf(DoctorRow::State state)
{
    switch (state) {
    case DoctorRow::State::works:
        return {StatusChip::Tint::success, "Works", "checkmark"};
    case DoctorRow::State::degraded:
        return {StatusChip::Tint::warning, "Degraded", "exclamationmark.triangle"};
    case DoctorRow::State::fails:
        return {StatusChip::Tint::danger, "Fails", "xmark"};
    case DoctorRow::State::unknown:
        break;
    }
    return {StatusChip::Tint::neutral, "Unknown", "circle"};
}

} // namespace

DoctorRows::DoctorRows(Doctor &doctor, SettingsCard &card, QObject *parent)
    : QObject(parent)
    , m_doctor(doctor)
    , m_head(new SettingsRow(QStringLiteral("This session"),
                             QStringLiteral("What works here, and what to do about what does not.")))
    , m_examine(new ThemedButton(ThemedButton::Kind::quiet, examineAgain))
{
    m_examine->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_examine->setMinimumWidth(m_examine->sizeHint().width()); // the longer of its two texts
    m_head->addControl(m_examine);
    card.addRow(m_head);
    for (const DoctorRow &row : Doctor::emptyRows()) {
        const Row shown{.row = new SettingsRow(row.title), .chip = new StatusChip};
        shown.chip->describe(StatusChip::Tint::neutral, QStringLiteral("Checking"));
        shown.row->addControl(shown.chip);
        card.addRow(shown.row);
        m_rows.insert(row.id, shown);
    }
    connect(m_examine, &QPushButton::clicked, &m_doctor, &Doctor::examine);
    connect(&m_doctor, &Doctor::isExaminingChanged, this, &DoctorRows::refresh);
    connect(&m_doctor, &Doctor::examined, this, &DoctorRows::refresh);
    refresh();
}

void DoctorRows::refresh()
{
    // The button stays enabled: a disabled one would lose the focus of whoever has pressed it.
    m_examine->setLabel(m_doctor.isExamining() ? examining : examineAgain);
    // What was found last stays while it is looked for anew.
    for (const DoctorRow &row : m_doctor.report().rows)
        show(m_rows.value(row.id), row);
}

void DoctorRows::show(const Row &shown, const DoctorRow &row)
{
    const Look look = lookOf(row.state);
    shown.chip->describe(look.tint, QString::fromLatin1(look.word), QString::fromLatin1(look.symbol));
    shown.chip->setAccessibleName(row.title + u": " + name(row.state));
    shown.row->setSubtitle(row.reason);
    shown.row->setNote(row.fix, Theme::Color::text);
}
