// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud.h"

#include "DataFolder.h"
#include "HttpAdapter.h"
#include "Service.h"

#include <QLoggingCategory>
#include <QMetaObject>
#include <QMutex>
#include <QTcpServer>
#include <QThread>

#include <fcntl.h>
#include <future>
#include <optional>
#include <unistd.h>
#include <utility>

using namespace Cloud;

namespace {

Q_LOGGING_CATEGORY(logLocalCloud, "brevix.localcloud")

/// Opening the database for the first time takes some 20 ms; a disk that takes longer than this is out of
/// order.
constexpr std::chrono::seconds sessionDeadline{5};

/// A text that both threads write.
class SharedText
{
public:
    QString get() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_text;
    }

    void set(const QString &text)
    {
        const QMutexLocker lock(&m_mutex);
        m_text = text;
    }

private:
    mutable QMutex m_mutex;
    QString m_text;
};

QDateTime toDateTime(Timestamp time)
{
    const auto millis = std::chrono::floor<std::chrono::milliseconds>(time);
    return QDateTime::fromMSecsSinceEpoch(millis.time_since_epoch().count(), Qt::UTC);
}

LocalCloud::Session toSession(const Service::Session &session)
{
    return {session.account.uid,
            session.account.email,
            session.account.displayName,
            QString::fromLatin1(session.idToken),
            QString::fromLatin1(session.refreshToken),
            toDateTime(session.expiresAt)};
}

/// The server's thread. Everything it works with lives and dies on it.
class ServerThread final : public QThread
{
public:
    ServerThread(Site site, DataFolder folder, qintptr listeningSocket, SharedText &errorString)
        : m_site(std::move(site))
        , m_folder(std::move(folder))
        , m_listeningSocket(listeningSocket)
        , m_errorString(errorString)
    {
        setObjectName(QStringLiteral("local-cloud"));
        m_mailbox.moveToThread(this);
    }

    /// From another thread; nothing when the server does not answer in time.
    std::optional<Service::Session> issueLocalSession()
    {
        auto promise = std::make_shared<std::promise<Service::Session>>();
        auto session = promise->get_future();
        QMetaObject::invokeMethod(
            &m_mailbox,
            [this, promise] {
                promise->set_value(m_service->issueLocalSession());
                m_errorString.set(m_service->errorString());
            },
            Qt::QueuedConnection);
        if (session.wait_for(sessionDeadline) != std::future_status::ready)
            return std::nullopt;
        return session.get();
    }

protected:
    void run() override
    {
        Service service(m_site, m_folder.databasePath(), m_folder.signingKey());
        m_service = &service;
        m_errorString.set(service.errorString());
        HttpAdapter adapter([&service](const Request &request) { return service.handle(request); }, {});
        if (!adapter.serve(m_listeningSocket))
            qCWarning(logLocalCloud) << "The listening socket could not be taken over";
        exec();
        m_service = nullptr;
    }

private:
    const Site m_site;
    const DataFolder m_folder;
    const qintptr m_listeningSocket;
    SharedText &m_errorString;
    QObject m_mailbox; ///< receives calls for the thread; they wait until its event loop runs
    Service *m_service = nullptr;
};

} // namespace

struct LocalCloud::Parts
{
    Options options;
    SharedText errorString;
    quint16 port = 0;
    std::unique_ptr<ServerThread> thread;
};

LocalCloud::LocalCloud(Options options)
    : m_parts(std::make_unique<Parts>())
{
    m_parts->options = std::move(options);
}

LocalCloud::~LocalCloud()
{
    if (!m_parts->thread)
        return;
    m_parts->thread->quit();
    m_parts->thread->wait();
}

bool LocalCloud::start()
{
    if (m_parts->thread)
        return true;
    const Options &options = m_parts->options;
    DataFolder folder(options.dataFolder);
    if (!folder.prepare()) {
        m_parts->errorString.set(folder.errorString());
        return false;
    }
    QTcpServer opener;
    const bool listens = opener.listen(QHostAddress::LocalHost, options.port);
    // A copy, because the opener closes its own.
    const int socket = listens ? ::fcntl(int(opener.socketDescriptor()), F_DUPFD_CLOEXEC, 0) : -1;
    if (socket < 0) {
        m_parts->errorString.set(
            QStringLiteral("Port %1 cannot be opened: %2.").arg(options.port).arg(opener.errorString()));
        return false;
    }
    m_parts->port = opener.serverPort();
    const Site site{m_parts->port,  options.projectID, options.libraryAppID,
                    options.apiKey, options.clientID,  options.redirectScheme};
    m_parts->thread = std::make_unique<ServerThread>(site, std::move(folder), socket, m_parts->errorString);
    m_parts->thread->start();
    return true;
}

QString LocalCloud::errorString() const
{
    return m_parts->errorString.get();
}

QUrl LocalCloud::origin() const
{
    return m_parts->port == 0
               ? QUrl()
               : QUrl(QStringLiteral("http://127.0.0.1:%1").arg(m_parts->port), QUrl::StrictMode);
}

LocalCloud::Session LocalCloud::issueLocalSession()
{
    if (!m_parts->thread)
        return {};
    const auto session = m_parts->thread->issueLocalSession();
    if (session)
        return toSession(*session);
    m_parts->errorString.set(QStringLiteral("The local server does not answer."));
    return {};
}
