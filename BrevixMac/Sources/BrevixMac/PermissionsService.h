// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Foundation/TaskScope.h"

#include <QObject>

class AccessibilityTree;
class KeyEvents;

/// Publishes the two grants that insertion needs. Main thread only. The flags change only by reading the
/// session.
class PermissionsService : public QObject
{
    Q_OBJECT

public:
    /// Reads both grants. @p tree and @p keyEvents must outlive this object.
    PermissionsService(AccessibilityTree &tree, KeyEvents &keyEvents);

    bool accessibilityGranted() const { return m_accessibilityGranted; }
    bool postEventGranted() const { return m_postEventGranted; }

    /// Reads both grants again and publishes them.
    void refresh();

    /// Asks the session for accessibility, reads both grants, and reads them again for some seconds.
    void requestAccessibility();

    /// The same for posting keys.
    void requestPostEvent();

    /// Reads the grants again 0.3 s, 1.3 s, 3.3 s and 8.3 s from now, in place of a pending series.
    void scheduleFollowUpRefreshes();

Q_SIGNALS:
    void accessibilityGrantedChanged();
    void postEventGrantedChanged();

private:
    QCoro::Task<> followUpRefreshes(std::stop_token token);

    AccessibilityTree &m_tree;
    KeyEvents &m_keyEvents;
    bool m_accessibilityGranted = false;
    bool m_postEventGranted = false;
    TaskScope m_followUpTasks; // keep last
};
