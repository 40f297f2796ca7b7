// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/Freedesktop/BrowserOpener.h"
#include "Desktop/Freedesktop/SchemeHandler.h"
#include "Desktop/WebAuthenticationSession.h"

#include <QTimer>

/// Shows the page in the user's default browser. The page's last address, of a scheme that is ours, makes the
/// desktop start `brevix open-url ADDRESS`; that second process hands the address to this one over D-Bus,
/// which gives it to openURL().
class BrowserAuthenticationSession final : public WebAuthenticationSession
{
    Q_OBJECT

public:
    struct Options
    {
        QString program; ///< opens the callback's address; this very program when empty
        SchemeHandler::Folders folders = SchemeHandler::Folders::standard();
        QList<QStringList> openers = BrowserOpener::standardOpeners();
        std::chrono::milliseconds timeLimit = WebAuthenticationSession::timeLimit;
    };

    /// Longest address that is looked at, in UTF-16 units. Real ones have a few hundred.
    static constexpr qsizetype longestAddress = 16384;

    BrowserAuthenticationSession();
    explicit BrowserAuthenticationSession(Options options);
    ~BrowserAuthenticationSession() override;

    bool start(Request request, Completion completion) override;
    void cancel() override;
    void openURL(const QString &address) override;

private:
    void end(const Result &result);
    void onTimeLimit();

    const Options m_options;
    BrowserOpener m_opener;
    QTimer m_timeLimit;
    Request m_request;
    Completion m_completion; ///< set while a session runs
};
