// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/WebBrowser.h"

#include <QStringList>
#include <QTimer>

/// Opens an address in the user's browser with the desktop's own opener, one after the other of those that
/// are installed until one does. Main thread only; waits for nothing. What is started outlives this object
/// and this program.
class BrowserOpener final : public WebBrowser
{
    Q_OBJECT

public:
    /// Openers as command lines to which the address is added; those that are not installed are passed over.
    explicit BrowserOpener(QList<QStringList> openers = standardOpeners());

    /// xdg-open, which knows the openers of the desktops; gio where that is not installed.
    static QList<QStringList> standardOpeners();

    /// It fails when every opener has said no, or none is installed.
    void open(const QUrl &url) override;

    /// How long an opener is given to say that it failed. One that runs longer is the browser itself.
    static constexpr std::chrono::seconds patience{15};

private:
    void tryNext(int attempt);
    bool start(const QStringList &command);

    const QList<QStringList> m_openers;
    QList<QStringList> m_remaining;
    QUrl m_url;
    QTimer m_patience;
    int m_attempt = 0; ///< number of the one that is followed; those before it are over
};
