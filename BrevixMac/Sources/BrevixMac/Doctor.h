// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DoctorReport.h"
#include "InsertionOutcome.h"
#include "KeyboardShortcut.h"

#include "Desktop/SessionProbe.h"
#include "Foundation/TaskScope.h"

#include <QObject>

#include <functional>

/// What a process of Brevix knows of itself. A value.
struct InstanceFacts
{
    bool isRunning = true;         ///< the running instance; false for one that only examines
    bool hasSilentSibling = false; ///< another instance runs and does not answer
    KeyboardShortcut shortcut = {};
    bool hasHotkeys = true;   ///< whether the session has such a facility
    bool isHotkeyHeld = true; ///< for one that only examines: whether it could be had
    bool isTrusted = true;    ///< connected to the accessibility bus
    bool isPostingAllowed = true;
    bool isTrayIconShown = true;
    InsertionMethod method = InsertionMethod::hybrid;

    bool operator==(const InstanceFacts &) const = default;
};

/// Examines what works in this session and says what to do about the rest. Main thread only; every question
/// has a deadline, and nothing that the user could notice is changed.
class Doctor final : public QObject
{
    Q_OBJECT

public:
    /// @p probe must outlive this object. @p instance is asked when the session has been looked at. @p scheme
    /// is that of the sign-in page's last address.
    Doctor(SessionProbe &probe, std::function<InstanceFacts()> instance, QString scheme);

    /// Examines the session. An examination that runs goes on instead of a new one.
    void examine();

    bool isExamining() const { return m_isExamining; }
    /// What was found last; without rows before the first examination.
    const DoctorReport &report() const { return m_report; }

    /// The judgement alone.
    static DoctorReport judge(const SessionFacts &session, const InstanceFacts &instance);

    /// Every row's identifier and title, in their order.
    static QList<DoctorRow> emptyRows();

Q_SIGNALS:
    void isExaminingChanged();
    void examined();

private:
    QCoro::Task<> look(std::stop_token token);
    void setExamining(bool isExamining);

    SessionProbe &m_probe;
    std::function<InstanceFacts()> m_instance;
    QString m_scheme;
    DoctorReport m_report;
    bool m_isExamining = false;
    TaskScope m_tasks; // keep last
};
