// SPDX-License-Identifier: GPL-3.0-or-later
#include "EditorDesk.h"

#include "Support/Waiting.h"

#include <QFile>
#include <QJsonDocument>
#include <QTcpSocket>

#include <stdexcept>

namespace {

const QString categories = QStringLiteral("categories");

QJsonObject textField(const QString &text)
{
    return {{QStringLiteral("stringValue"), text}};
}

AppConfiguration configuration()
{
    AppConfiguration configuration = AppConfiguration::fallback();
    configuration.firebase.projectID = QStringLiteral("project");
    configuration.firebase.apiKey = QStringLiteral("key");
    return configuration;
}

QString collectionOf(const QByteArray &path)
{
    for (const char *name : {"categories", "prompts", "skills"}) {
        if (path.contains(QByteArray(QByteArray("/") + name)))
            return QString::fromLatin1(name);
    }
    return {};
}

} // namespace

EditorServer::EditorServer()
{
    if (!listen(QHostAddress::LocalHost))
        throw std::runtime_error("no loopback port");
    connect(this, &QTcpServer::newConnection, this, [this] {
        QTcpSocket *socket = nextPendingConnection();
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onBytes(socket); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    });
}

QUrl EditorServer::origin() const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(serverPort()));
}

void EditorServer::addCategory(const QString &id, const QString &name, const QString &color)
{
    const QJsonObject fields{{QStringLiteral("name"), textField(name)},
                             {QStringLiteral("color"), textField(color)}};
    m_documents[categories].append(
        QJsonObject{{QStringLiteral("name"), QString(u"documents/categories/" + id)},
                    {QStringLiteral("fields"), fields}});
}

void EditorServer::removeCategory(const QString &id)
{
    QJsonArray kept;
    for (const auto &document : std::as_const(m_documents[categories])) {
        if (!document.toObject().value(u"name").toString().endsWith(u"/" + id))
            kept.append(document);
    }
    m_documents[categories] = kept;
}

QString EditorServer::text(const QJsonObject &fields, const QString &name)
{
    return fields.value(name).toObject().value(u"stringValue").toString();
}

void EditorServer::onBytes(QTcpSocket *socket)
{
    const QByteArray bytes = socket->peek(socket->bytesAvailable());
    const qsizetype headerEnd = bytes.indexOf("\r\n\r\n");
    if (headerEnd < 0)
        return;
    qsizetype length = 0;
    for (const QByteArray &line : bytes.first(headerEnd).split('\n')) {
        if (line.toLower().startsWith("content-length:"))
            length = line.mid(line.indexOf(':') + 1).trimmed().toLongLong();
    }
    if (bytes.size() < headerEnd + 4 + length)
        return;
    socket->read(headerEnd + 4);
    const QByteArray body = socket->read(length);
    const QList<QByteArray> line = bytes.first(bytes.indexOf('\r')).split(' ');
    answer(socket, {line.value(0), line.value(1), QJsonDocument::fromJson(body).object()});
}

void EditorServer::answer(QTcpSocket *socket, const Request &request)
{
    const QString collection = collectionOf(request.path);
    if (request.method == "GET") {
        send(socket, 200, {{QStringLiteral("documents"), m_documents.value(collection)}});
        return;
    }
    const auto reply = [this, socket = QPointer(socket), request, collection] {
        if (!socket)
            return;
        if (refusal) {
            const QJsonObject error{{QStringLiteral("message"), *refusal}};
            send(socket, 400, {{QStringLiteral("error"), error}});
        } else if (request.path.contains("optimizePrompt")) {
            const QJsonObject result{{QStringLiteral("text"), optimizedText}};
            send(socket, 200, {{QStringLiteral("result"), result}});
        } else {
            send(socket, 200, create(collection, request.body.value(u"fields").toObject()));
        }
    };
    if (request.path.contains("optimizePrompt"))
        optimizeRequests.append(request.body.value(u"data").toObject().value(u"prompt").toString());
    else
        ++writes;
    if (isHolding)
        m_held.append(reply);
    else
        reply();
}

QJsonObject EditorServer::create(const QString &collection, const QJsonObject &fields)
{
    m_created[collection].append(fields);
    const QString name = QStringLiteral("documents/%1/new%2").arg(collection).arg(m_nextID++);
    const QJsonObject document{{QStringLiteral("name"), name}, {QStringLiteral("fields"), fields}};
    m_documents[collection].append(document);
    return document;
}

void EditorServer::dropConnections()
{
    const auto sockets = findChildren<QTcpSocket *>();
    for (QTcpSocket *socket : sockets)
        socket->abort();
}

void EditorServer::release()
{
    isHolding = false;
    const auto held = std::exchange(m_held, {});
    for (const auto &reply : held)
        reply();
}

void EditorServer::send(QTcpSocket *socket, int status, const QJsonObject &body)
{
    const QByteArray bytes = QJsonDocument(body).toJson();
    socket->write("HTTP/1.1 " + QByteArray::number(status) +
                  " X\r\nContent-Type: application/json\r\nContent-Length: " +
                  QByteArray::number(bytes.size()) + "\r\n\r\n" + bytes);
}

EditorDesk::EditorDesk()
{
    defaults = std::make_unique<UserDefaults>(folder.filePath(QStringLiteral("defaults.plist")));
    server.addCategory(QStringLiteral("outreach"), QStringLiteral("Outreach"), QStringLiteral("#8b5cf6"));
    server.addCategory(QStringLiteral("writing"), QStringLiteral("Writing"), QStringLiteral("#ec4899"));
}

EditorDesk::~EditorDesk() = default;

void EditorDesk::start()
{
    appState.reset();
    if (userID) {
        storeSession(*userID);
    } else {
        defaults->remove(AuthService::storageKey);
    }
    appState =
        std::make_unique<AppState>(AppEnvironment{.configuration = configuration(),
                                                  .endpoints = CloudEndpoints::local(server.origin()),
                                                  .defaults = *defaults,
                                                  .http = http,
                                                  .accessibilityTree = tree,
                                                  .pasteboard = pasteboard,
                                                  .workspace = workspace,
                                                  .keyEvents = keyEvents,
                                                  .eventMonitor = eventMonitor,
                                                  .hotKeys = hotKeys,
                                                  .webAuthenticationSession = webAuthenticationSession,
                                                  .keyCapture = keyCapture,
                                                  .statusItem = statusItem,
                                                  .loginItem = loginItem,
                                                  .bundleIdentifier = QStringLiteral("app.brevix.Brevix"),
                                                  .processIdentifier = 1});
    const auto isSynced = [this] {
        return appState->libraryStore().syncState().kind == SyncState::Kind::synced;
    };
    if (userID && !waitUntil(isSynced))
        throw std::runtime_error("the library did not arrive");
}

void EditorDesk::storeSession(const QString &id)
{
    const StoredAuthSession session{.uid = id,
                                    .email = QStringLiteral("ann@example.com"),
                                    .displayName = {},
                                    .photoURLString = {},
                                    .firebaseIDToken = QStringLiteral("token"),
                                    .refreshToken = QStringLiteral("refresh"),
                                    .expiresAt = QDateTime::currentDateTimeUtc().addSecs(3600)};
    defaults->setData(AuthService::storageKey, session.toJson());
}

void EditorDesk::signInAs(const QString &id)
{
    storeSession(id);
    appState->authService().start();
    if (!waitUntil([&] {
            const auto &user = appState->authService().currentUser();
            return user && user->uid == id;
        }))
        throw std::runtime_error("nobody signed in");
}

QString EditorDesk::write(const QString &name, const QByteArray &bytes) const
{
    const QString path = folder.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error("cannot write a file");
    return path;
}
