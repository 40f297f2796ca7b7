// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppDelegate.h"

#include "AppState.h"

#include <QGuiApplication>
#include <QTimer>

namespace {

using namespace std::chrono_literals;

/// The two waits of a paste and the hand-over of the clipboard, with room to spare.
constexpr auto longestInsertion = 2s;

} // namespace

AppDelegate::AppDelegate(AppState &appState)
    : m_appState(appState)
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
    if (!m_appState.isInserting()) {
        QCoreApplication::quit();
        return;
    }
    connect(&m_appState, &AppState::isInsertingChanged, this, &QCoreApplication::quit);
    QTimer::singleShot(longestInsertion, this, &QCoreApplication::quit);
}
