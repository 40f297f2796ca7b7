// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerDesk.h"

#include "Support/Waiting.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>

#include <stdexcept>

namespace {

QJsonObject textField(const QString &text)
{
    return {{QStringLiteral("stringValue"), text}};
}

QJsonObject document(const QString &collection, const QString &id, QJsonObject fields, qsizetype order)
{
    fields.insert(QStringLiteral("order"),
                  QJsonObject{{QStringLiteral("integerValue"), QString::number(order)}});
    return {{QStringLiteral("name"),
             QString(u"projects/p/databases/(default)/documents/" + collection + u'/' + id)},
            {QStringLiteral("fields"), fields}};
}

AppConfiguration configuration(bool isComplete)
{
    AppConfiguration configuration = AppConfiguration::fallback();
    configuration.firebase.projectID = QStringLiteral("project");
    configuration.firebase.apiKey = QStringLiteral("key");
    if (isComplete) {
        configuration.firebase.googleAppID = QStringLiteral("1:1:linux:test");
        configuration.firebase.clientID = QStringLiteral("client");
        configuration.firebase.reversedClientID = QStringLiteral("test.client");
    }
    return configuration;
}

} // namespace

QString LibraryServer::refusal()
{
    return QStringLiteral("You may not do that.");
}

LibraryServer::LibraryServer()
{
    if (!listen(QHostAddress::LocalHost))
        throw std::runtime_error("no loopback port");
    connect(this, &QTcpServer::newConnection, this, [this] {
        QTcpSocket *socket = nextPendingConnection();
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(socket); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    });
}

QUrl LibraryServer::origin() const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(serverPort()));
}

void LibraryServer::addCategory(const QString &id, const QString &name, const QString &color)
{
    m_categories.append(
        document(QStringLiteral("categories"), id,
                 {{QStringLiteral("name"), textField(name)}, {QStringLiteral("color"), textField(color)}},
                 m_categories.size()));
}

void LibraryServer::addPrompt(const QString &id, const QString &title, const QString &text,
                              const QString &categoryID)
{
    m_prompts.append(document(QStringLiteral("prompts"), id,
                              {{QStringLiteral("title"), textField(title)},
                               {QStringLiteral("text"), textField(text)},
                               {QStringLiteral("categoryId"), textField(categoryID)}},
                              m_prompts.size()));
}

void LibraryServer::addSkill(const QString &id, const QString &title, const QString &text)
{
    m_skills.append(
        document(QStringLiteral("skills"), id,
                 {{QStringLiteral("title"), textField(title)}, {QStringLiteral("text"), textField(text)}},
                 m_skills.size()));
}

void LibraryServer::clear()
{
    m_categories = {};
    m_prompts = {};
    m_skills = {};
}

void LibraryServer::answer(QTcpSocket *socket)
{
    const QByteArray request = socket->peek(socket->bytesAvailable());
    if (!request.contains("\r\n\r\n"))
        return;
    socket->readAll();
    if (!request.startsWith("GET ")) {
        if (writes == Writes::held)
            m_held.append(socket);
        else if (writes == Writes::refused)
            reply(socket, "403 Forbidden",
                  {{QStringLiteral("error"), QJsonObject{{QStringLiteral("message"), refusal()}}}});
        else
            reply(socket, "200 OK", {});
        return;
    }
    const QByteArray path = request.split(' ').value(1);
    const QJsonArray documents = path.contains("/categories") ? m_categories
                                 : path.contains("/prompts")  ? m_prompts
                                 : path.contains("/skills")   ? m_skills
                                                              : QJsonArray();
    reply(socket, "200 OK", {{QStringLiteral("documents"), documents}});
}

void LibraryServer::reply(QTcpSocket *socket, const QByteArray &status, const QJsonObject &object)
{
    const QByteArray body = QJsonDocument(object).toJson();
    socket->write("HTTP/1.1 " + status + "\r\nContent-Type: application/json\r\nContent-Length: " +
                  QByteArray::number(body.size()) + "\r\n\r\n" + body);
}

void LibraryServer::releaseWrites()
{
    writes = Writes::accepted;
    for (const QPointer<QTcpSocket> &socket : std::exchange(m_held, {})) {
        if (socket)
            reply(socket, "200 OK", {});
    }
}

PickerDesk::PickerDesk()
{
    defaults = std::make_unique<UserDefaults>(folder.filePath(QStringLiteral("defaults.plist")));
    workspace.addApplication(editorPid, QStringLiteral("Text Editor"), QStringLiteral("org.example.Editor"));
    workspace.frontmost = editorPid;
    tree.fields.insert(QStringLiteral("/field"), {.pid = editorPid,
                                                  .role = QStringLiteral("AXTextArea"),
                                                  .subrole = {},
                                                  .value = QString(),
                                                  .selectedRange = TextRange{},
                                                  .isSettable = true,
                                                  .acceptsWrites = true});
    tree.focusedPath = QStringLiteral("/field");
}

PickerDesk::~PickerDesk() = default;

void PickerDesk::addSampleLibrary()
{
    server.addCategory(QStringLiteral("outreach"), QStringLiteral("Outreach"), QStringLiteral("#8b5cf6"));
    server.addCategory(QStringLiteral("hiring"), QStringLiteral("Hiring"), QStringLiteral("#10b981"));
    server.addCategory(QStringLiteral("engineering"), QStringLiteral("Engineering"),
                       QStringLiteral("#3b82f6"));
    server.addPrompt(
        QStringLiteral("cold"), QStringLiteral("Cold outreach follow-up"),
        QStringLiteral(
            "Hi {{name}},\nfollowing up on my note about the {{topic}}. Would a short call this week "
            "be of use? I can show what changed since we last spoke.\n\nBest,\n{{your_name}}"),
        QStringLiteral("outreach"));
    server.addPrompt(
        QStringLiteral("interview"), QStringLiteral("Follow-up after interview"),
        QStringLiteral("Thank you for the conversation today. I especially liked how the team works."),
        QStringLiteral("hiring"));
    server.addPrompt(
        QStringLiteral("notes"), QStringLiteral("Meeting notes to actions"),
        QStringLiteral(
            "Turn these notes into action items, each with an owner: {{notes}}. Follow the order."),
        QStringLiteral("engineering"));
    server.addPrompt(QStringLiteral("decline"), QStringLiteral("Kind decline"),
                     QStringLiteral("Thank you for thinking of me. I cannot take this on now."));
    server.addSkill(
        QStringLiteral("reviewer"), QStringLiteral("Senior code reviewer"),
        QStringLiteral(
            "You review changes for correctness first, then for clarity. Follow the project's style."));
}

void PickerDesk::start()
{
    if (isSignedIn) {
        const StoredAuthSession session{.uid = QStringLiteral("user"),
                                        .email = email,
                                        .displayName = displayName,
                                        .photoURLString = {},
                                        .firebaseIDToken = QStringLiteral("token"),
                                        .refreshToken = QStringLiteral("refresh"),
                                        .expiresAt = QDateTime::currentDateTimeUtc().addSecs(3600)};
        defaults->setData(AuthService::storageKey, session.toJson());
    }
    appState =
        std::make_unique<AppState>(AppEnvironment{.configuration = configuration(isConfigured),
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
    if (isSignedIn && !waitUntil(isSynced))
        throw std::runtime_error("the library did not arrive");
}

void PickerDesk::press()
{
    bool isPresented = false;
    const auto present = appState->presentPaletteAction;
    appState->presentPaletteAction = [&] {
        isPresented = true;
        if (present)
            present();
    };
    appState->handleHotkey();
    const bool wasPresented = waitUntil([&] { return isPresented; });
    appState->presentPaletteAction = present;
    if (!wasPresented)
        throw std::runtime_error("the picker was not presented");
}
