// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class AppState;

/// Turns what happens to the application as a whole into calls of AppState. Main thread only.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    /// @p appState must outlive this object.
    explicit AppDelegate(AppState &appState);

    /// The application lives in the tray: closing its last window does not end it.
    void applicationDidFinishLaunching();

    /// Ends the application as soon as no insertion is under way, so that a clipboard that was taken is given
    /// back.
    void quit();

private:
    void applicationDidBecomeActive();

    AppState &m_appState;
};
