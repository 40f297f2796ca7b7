// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppDelegate.h"

#include "AppState.h"

#include "Desktop/Pasteboard.h"

#include <QGuiApplication>
#include <QTimer>

#include <utility>

namespace {

using namespace std::chrono_literals;

/// A direct edit is followed for 4 s. A paste takes 2 s at most to save the clipboard, 2 s for keys that the
/// user holds and 1 s for the focus; then the clipboard goes back within 8 s. Only a program that refuses an
/// edit slowly and then reads a paste slowly takes longer, and then the clipboard goes back at the end.
constexpr auto longestWait = 15s;

} // namespace

AppDelegate::AppDelegate(AppState &appState, Pasteboard &pasteboard, std::function<void()> end)
    : m_appState(appState)
    , m_pasteboard(pasteboard)
    , m_end(std::move(end))
{
}

void AppDelegate::applicationDidFinishLaunching()
{
    QGuiApplication::setQuitOnLastWindowClosed(false);
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive)
            applicationDidBecomeActive();
    });
}

void AppDelegate::applicationDidBecomeActive()
{
    // Off the path from the hotkey to the painted panel.
    QTimer::singleShot(0, &m_appState, &AppState::applicationDidBecomeActive);
}

void AppDelegate::quit()
{
    if (std::exchange(m_isQuitting, true)) {
        m_end();
        return;
    }
    connect(&m_appState, &AppState::isInsertingChanged, this, &AppDelegate::quitWhenDone);
    connect(&m_pasteboard, &Pasteboard::restored, this, &AppDelegate::quitWhenDone);
    QTimer::singleShot(longestWait, this, m_end);
    quitWhenDone();
}

void AppDelegate::quitWhenDone()
{
    if (!m_appState.isInserting() && !m_pasteboard.isRestorePending())
        m_end();
}
