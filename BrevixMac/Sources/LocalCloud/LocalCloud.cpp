// SPDX-License-Identifier: GPL-3.0-or-later
#include "LocalCloud.h"

#include "Certificate.h"
#include "DataFolder.h"
#include "HttpAdapter.h"
#include "PeerUser.h"
#include "Service.h"

#include <QLoggingCategory>
#include <QMetaObject>
#include <QTcpServer>
#include <QThread>

#include <fcntl.h>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <unistd.h>
#include <utility>

using namespace Cloud;

namespace {

Q_LOGGING_CATEGORY(logLocalCloud, "brevix.localcloud")

/// With an open database it takes a few milliseconds.
constexpr std::chrono::seconds sessionDeadline{5};

/// Without passwords, whoever reaches the port may sign in as anybody. Loopback keeps other computers away;
/// this keeps the other users of this one away.
HttpAdapter::Admission ownUserAlone()
{
    return [](qintptr descriptor) {
        const auto user = userOfPeer(descriptor);
        if (user != ::geteuid())
            qCWarning(logLocalCloud) << "A connection of another user of this computer was refused";
        return user == ::geteuid();
    };
}

/// A text that both threads write.
class SharedText
{
public:
    QString get() const
    {
        const std::lock_guard lock(m_mutex);
        return m_text;
    }

    void set(const QString &text)
    {
        const std::lock_guard lock(m_mutex);
        m_text = text;
    }

private:
    mutable std::mutex m_mutex;
    QString m_text;
};

QDateTime toDateTime(Timestamp time)
{
    const auto millis = std::chrono::floor<std::chrono::milliseconds>(time);
    return QDateTime::fromMSecsSinceEpoch(millis.time_since_epoch().count(), Qt::UTC);
}

/// A scheme and a host, perhaps a port, and nothing more; HTTPS unless the host is this computer.
bool isOrigin(const QUrl &url)
{
    const bool isLocal = url.host() == QLatin1String("localhost") || QHostAddress(url.host()).isLoopback();
    const bool isWeb =
        url.scheme() == QLatin1String("https") || (url.scheme() == QLatin1String("http") && isLocal);
    return url.isValid() && isWeb && !url.host().isEmpty() && url.path().isEmpty() && !url.hasQuery() &&
           !url.hasFragment() && url.userInfo().isEmpty();
}

bool isWildcard(const QHostAddress &address)
{
    return address == QHostAddress::Any || address == QHostAddress::AnyIPv4 ||
           address == QHostAddress::AnyIPv6;
}

Site siteOf(const LocalCloud::Options &options, quint16 port)
{
    const bool isNamed = !options.address.isLoopback() && !isWildcard(options.address);
    return {.port = port,
            .projectID = options.projectID,
            .libraryAppID = options.libraryAppID,
            .apiKey = options.apiKey,
            .clientID = options.clientID,
            .redirectScheme = options.redirectScheme,
            .model = options.model,
            .address = isNamed ? options.address.toString() : QString(),
            .isEncrypted = !options.certificateFile.isEmpty(),
            .publicUrl = options.publicUrl,
            .asksPasswords = options.asksPasswords};
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
    ServerThread(Site site, DataFolder folder, qintptr listeningSocket, std::optional<QSslConfiguration> tls,
                 SharedText &errorString)
        : m_site(std::move(site))
        , m_folder(std::move(folder))
        , m_listeningSocket(listeningSocket)
        , m_tls(std::move(tls))
        , m_errorString(errorString)
    {
        setObjectName(QStringLiteral("local-cloud"));
        m_mailbox.moveToThread(this);
    }

    /// From another thread: calls @p done on @p receiver's, with whether the database can be used, when that
    /// is known. @p receiver must outlive this object.
    void whenOpened(QObject &receiver, std::function<void(bool)> done)
    {
        QMetaObject::invokeMethod(
            &m_mailbox,
            [this, &receiver, done = std::move(done)] {
                QMetaObject::invokeMethod(
                    &receiver, [done, isUsable = m_service->isUsable()] { done(isUsable); },
                    Qt::QueuedConnection);
            },
            Qt::QueuedConnection);
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
        HttpAdapter adapter([&service](const Request &request) { return service.handle(request); }, {},
                            m_site.asksPasswords ? HttpAdapter::Admission() : ownUserAlone());
        if (!adapter.serve(m_listeningSocket, m_tls))
            qCWarning(logLocalCloud) << "The listening socket could not be taken over";
        exec();
        m_service = nullptr;
    }

private:
    const Site m_site;
    const DataFolder m_folder;
    const qintptr m_listeningSocket;
    const std::optional<QSslConfiguration> m_tls;
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
    QObject receiver; // of what the thread has to say
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
    std::optional<QSslConfiguration> tls;
    QString problem = problemOf(options);
    if (problem.isEmpty() && !options.certificateFile.isEmpty())
        tls = Certificate::read(options.certificateFile, options.keyFile, problem);
    DataFolder folder(options.dataFolder);
    if (problem.isEmpty() && !folder.prepare())
        problem = folder.errorString();
    if (!problem.isEmpty()) {
        m_parts->errorString.set(problem);
        return false;
    }
    QTcpServer opener;
    const bool listens = opener.listen(options.address, options.port);
    // A copy, because the opener closes its own.
    const int socket = listens ? ::fcntl(int(opener.socketDescriptor()), F_DUPFD_CLOEXEC, 0) : -1;
    if (socket < 0) {
        m_parts->errorString.set(
            QStringLiteral("Port %1 cannot be opened: %2.").arg(options.port).arg(opener.errorString()));
        return false;
    }
    m_parts->port = opener.serverPort();
    m_parts->thread = std::make_unique<ServerThread>(siteOf(options, m_parts->port), std::move(folder),
                                                     socket, std::move(tls), m_parts->errorString);
    m_parts->thread->start();
    return true;
}

void LocalCloud::whenOpened(std::function<void(bool)> done)
{
    if (m_parts->thread)
        m_parts->thread->whenOpened(m_parts->receiver, std::move(done));
}

QString LocalCloud::problemOf(const Options &options)
{
    const bool isEncrypted = !options.certificateFile.isEmpty();
    const QUrl &url = options.publicUrl;
    if (isEncrypted == options.keyFile.isEmpty())
        return QStringLiteral("A certificate and its private key belong together.");
    if (!options.address.isLoopback() && !isEncrypted)
        return QStringLiteral(
                   "Listening at %1 would send passwords and libraries unencrypted. Give a certificate and "
                   "its key, or listen at 127.0.0.1 behind a proxy that speaks HTTPS.")
            .arg(options.address.toString());
    if (!url.isEmpty() && !isOrigin(url))
        return QStringLiteral("The public URL must be like https://library.example.org, without a path.");
    const bool isPublic = !options.address.isLoopback() || !url.isEmpty();
    if (isPublic && !options.asksPasswords)
        return QStringLiteral("A server that others can reach must ask for passwords.");
    if (isWildcard(options.address) && url.isEmpty())
        return QStringLiteral(
            "A server that listens at every address needs the public URL that clients use.");
    return {};
}

QString LocalCloud::errorString() const
{
    return m_parts->errorString.get();
}

QUrl LocalCloud::origin() const
{
    const Options &options = m_parts->options;
    if (m_parts->port == 0)
        return {};
    if (!options.publicUrl.isEmpty())
        return options.publicUrl;
    QUrl origin;
    origin.setScheme(options.certificateFile.isEmpty() ? QStringLiteral("http") : QStringLiteral("https"));
    origin.setHost(options.address.toString());
    origin.setPort(m_parts->port);
    return origin;
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
