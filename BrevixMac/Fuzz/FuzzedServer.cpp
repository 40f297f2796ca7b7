// SPDX-License-Identifier: GPL-3.0-or-later
#include "FuzzedServer.h"

#include "FuzzTarget.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QUrl>
#include <QUrlQuery>

using namespace Cloud;

namespace {

const QByteArray signingKey(32, 'k');
const QString project = QStringLiteral("demo");
constexpr Timestamp now{std::chrono::seconds(1'800'000'000)};

Site site()
{
    return {.port = 4711,
            .projectID = project,
            .libraryAppID = QStringLiteral("app"),
            .apiKey = QStringLiteral("key"),
            .clientID = QStringLiteral("client"),
            .redirectScheme = QStringLiteral("app.brevix.fuzz")};
}

int argumentCount = 1;
char programName[] = "fuzz";
char *arguments[] = {programName, nullptr};

} // namespace

const QByteArray FuzzedServer::host = "127.0.0.1:4711";

FuzzedServer::FuzzedServer()
    : m_application(argumentCount, arguments)
{
    start();
    m_service->issueLocalSession();
    m_service.reset(); // folds the journal into the file
    QFile file(m_folder.filePath(QStringLiteral("library.sqlite")));
    require(file.open(QIODevice::ReadOnly), "the server makes its database");
    m_pristine = file.readAll();
    m_hasChanged = true;
}

void FuzzedServer::start()
{
    m_service = std::make_unique<Service>(site(), m_folder.filePath(QStringLiteral("library.sqlite")),
                                          signingKey, [] { return now; });
    require(m_service->errorString().isEmpty(), "the server starts");
}

void FuzzedServer::reset()
{
    if (!m_hasChanged)
        return;
    m_service.reset();
    QFile file(m_folder.filePath(QStringLiteral("library.sqlite")));
    require(file.open(QIODevice::WriteOnly) && file.write(m_pristine) == m_pristine.size(),
            "the database can be put back");
    file.close();
    start();
    const Service::Session session = m_service->issueLocalSession();
    const IdTokens tokens(signingKey, project, [] { return now; });
    m_secrets = {{"token", session.idToken},
                 {"refresh", session.refreshToken},
                 {"other", tokens.issue({QStringLiteral("other"), QStringLiteral("other@example.org"), {}})}};
    m_hasChanged = false;
}

Response FuzzedServer::handle(const Request &request)
{
    const Response response = m_service->handle(request);
    m_hasChanged = m_hasChanged || (request.method != "GET" && response.status < 400);
    return response;
}

QByteArray FuzzedServer::withSecrets(QByteArray text) const
{
    for (auto secret = m_secrets.cbegin(); secret != m_secrets.cend(); ++secret)
        text.replace(QByteArray("{{" + secret.key() + "}}"), secret.value());
    return text;
}

void FuzzedServer::learn(const Response &response)
{
    const QJsonObject json = QJsonDocument::fromJson(response.body).object();
    for (auto member = json.begin(); member != json.end(); ++member)
        if (member.value().isString())
            m_secrets.insert(member.key().toUtf8(), member.value().toString().toUtf8());
    for (const auto &[name, value] : response.headers) {
        const QString code =
            QUrlQuery(QUrl(QString::fromLatin1(value))).queryItemValue(QStringLiteral("code"));
        if (name == "Location" && !code.isEmpty())
            m_secrets.insert("code", code.toLatin1());
    }
    static const QRegularExpression hidden(QStringLiteral("name=\"request\" value=\"([^\"]*)\""));
    const auto match = hidden.match(QString::fromUtf8(response.body));
    if (match.hasMatch())
        m_secrets.insert("request", match.captured(1).toLatin1());
}
