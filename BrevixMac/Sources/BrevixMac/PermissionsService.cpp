// SPDX-License-Identifier: GPL-3.0-or-later
#include "PermissionsService.h"

#include "Desktop/AccessibilityTree.h"
#include "Desktop/KeyEvents.h"

#include <array>

namespace {

using namespace std::chrono_literals;

// Users take a moment to answer the session's question; each wait counts from the end of the one before.
constexpr std::array<std::chrono::milliseconds, 4> followUpWaits{300ms, 1000ms, 2000ms, 5000ms};

} // namespace

PermissionsService::PermissionsService(AccessibilityTree &tree, KeyEvents &keyEvents)
    : m_tree(tree)
    , m_keyEvents(keyEvents)
    , m_accessibilityGranted(tree.isProcessTrusted())
    , m_postEventGranted(keyEvents.isPostingAllowed())
{
    connect(&tree, &AccessibilityTree::trustChanged, this, &PermissionsService::refresh);
    connect(&keyEvents, &KeyEvents::postingAllowedChanged, this, &PermissionsService::refresh);
}

void PermissionsService::refresh()
{
    const bool accessibility = m_tree.isProcessTrusted();
    const bool postEvent = m_keyEvents.isPostingAllowed();
    if (m_accessibilityGranted != accessibility) {
        m_accessibilityGranted = accessibility;
        Q_EMIT accessibilityGrantedChanged();
    }
    if (m_postEventGranted != postEvent) {
        m_postEventGranted = postEvent;
        Q_EMIT postEventGrantedChanged();
    }
}

void PermissionsService::requestAccessibility()
{
    m_tree.requestTrust();
    refresh();
    scheduleFollowUpRefreshes();
}

void PermissionsService::requestPostEvent()
{
    m_keyEvents.requestPosting();
    refresh();
    scheduleFollowUpRefreshes();
}

void PermissionsService::scheduleFollowUpRefreshes()
{
    m_followUpTasks.restart();
    detach(followUpRefreshes(m_followUpTasks.token()), "reading the permissions again");
}

QCoro::Task<> PermissionsService::followUpRefreshes(std::stop_token token)
{
    for (const auto wait : followUpWaits) {
        const bool waited = co_await sleepFor(wait, token);
        if (!waited || token.stop_requested())
            co_return;
        refresh();
    }
}
