// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QObject>

#include <functional>

class AppState;
class Pasteboard;

/// Turns what happens to the application as a whole into calls of AppState. Main thread only.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive this object. @p end ends the event loop.
    AppDelegate(AppState &appState, Pasteboard &pasteboard,
                std::function<void()> end = &QCoreApplication::quit);

    /// The application lives in the tray: closing its last window does not end it.
    void applicationDidFinishLaunching();

    /// Ends the application as soon as no insertion is under way and the clipboard is as it was: a busy
    /// program that reads it late would get the old text otherwise. At once when asked a second time.
    void quit();

private:
    void applicationDidBecomeActive();
    void quitWhenDone();

    AppState &m_appState;
    Pasteboard &m_pasteboard;
    std::function<void()> m_end;
    bool m_isQuitting = false;
};
