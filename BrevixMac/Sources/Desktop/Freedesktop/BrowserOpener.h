// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QUrl>

/// Opens an address in the user's browser with the desktop's own opener, one after the other of those that
/// are installed until one does. Main thread only; waits for nothing. What is started outlives this object
/// and this program.
class BrowserOpener : public QObject
{
    Q_OBJECT

public:
    /// Openers as command lines to which the address is added; those that are not installed are passed over.
    explicit BrowserOpener(QList<QStringList> openers = standardOpeners());

    /// xdg-open, which knows the openers of the desktops; gio where that is not installed.
    static QList<QStringList> standardOpeners();

    /// Starts to open @p url; an attempt that still runs is no longer followed.
    void open(const QUrl &url);

    /// How long an opener is given to say that it failed. One that runs longer is the browser itself.
    static constexpr std::chrono::seconds patience{15};

Q_SIGNALS:
    /// Every opener has said no, or none is installed. Never emitted from inside open().
    void failed();

private:
    void tryNext(int attempt);
    bool start(const QStringList &command);

    const QList<QStringList> m_openers;
    QList<QStringList> m_remaining;
    QUrl m_url;
    QTimer m_patience;
    int m_attempt = 0; ///< number of the one that is followed; those before it are over
};
