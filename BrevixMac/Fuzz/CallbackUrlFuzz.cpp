// SPDX-License-Identifier: GPL-3.0-or-later
#include "FuzzTarget.h"

#include "AuthError.h"
#include "GoogleAuthorization.h"

#include "Desktop/Freedesktop/BrowserAuthenticationSession.h"

#include <QTemporaryDir>
#include <QUrlQuery>

namespace {

using GoogleAuthorization::Attempt;

const QString scheme = QStringLiteral("app.brevix.fuzz");
const Attempt attempt{.state = QStringLiteral("St4te~_"),
                      .codeVerifier = QStringLiteral("verifier"),
                      .redirectURI = scheme + QStringLiteral(":/oauthredirect")};

/// A running sign-in. It takes none of the addresses for its answer, so that one serves for all.
class Browser
{
public:
    Browser()
        : m_session({.program = QStringLiteral("/usr/bin/brevix"),
                     .folders = {m_folder.filePath(QStringLiteral("data")),
                                 m_folder.filePath(QStringLiteral("config"))},
                     .openers = {}})
    {
        const auto remember = [this](const QUrl &callback) {
            m_callback = callback;
            return false;
        };
        require(
            m_session.start({.url = {}, .callbackScheme = scheme, .isAnswer = remember}, [](const auto &) {}),
            "a session can be started");
    }

    /// What the session makes of @p address; nothing when it is not of its scheme.
    std::optional<QUrl> open(const QString &address)
    {
        m_callback.reset();
        m_session.openURL(address);
        return m_callback;
    }

private:
    QTemporaryDir m_folder;
    std::optional<QUrl> m_callback;
    BrowserAuthenticationSession m_session;
};

/// The code that @p callback carries; nothing when it is refused.
std::optional<QString> codeOf(const QUrl &callback)
{
    try {
        const QString code = GoogleAuthorization::authorizationCode(callback, attempt.state);
        require(!code.isEmpty(), "a code has characters");
        return code;
    } catch (const AuthError &error) {
        require(!formatAuthError(error).isEmpty(), "a refusal has words");
        require(!attempt.isAnsweredBy(callback) || error.kind() != AuthError::Kind::stateMismatch,
                "what answers the attempt carries its state");
        return std::nullopt;
    }
}

QString decodedItem(const QByteArray &form, const QString &name)
{
    return QUrlQuery(QString::fromLatin1(form)).queryItemValue(name, QUrl::FullyDecoded);
}

} // namespace

void readForeignBytes(const QByteArray &bytes)
{
    static Browser browser;
    const QString address = QString::fromUtf8(bytes);
    const auto callback = browser.open(address);
    if (!callback)
        return;
    require(address.startsWith(scheme, Qt::CaseInsensitive), "only addresses of the scheme get through");
    const auto code = codeOf(*callback);
    if (!code)
        return;
    require(callback->query(QUrl::FullyDecoded).contains(QStringLiteral("state=")),
            "a code comes with a state");

    const QByteArray form = attempt.tokenExchangeBody(*code, QStringLiteral("client"));
    require(decodedItem(form, QStringLiteral("code")) == *code, "the code reaches the server as it came");
    require(decodedItem(form, QStringLiteral("code_verifier")) == attempt.codeVerifier,
            "no code changes another part of the exchange");
    const QUrl again(attempt.redirectURI + u'?' +
                     QString::fromLatin1(GoogleAuthorization::formEncodedQuery(
                         {{QStringLiteral("code"), *code}, {QStringLiteral("state"), attempt.state}})));
    require(attempt.isAnsweredBy(again) && codeOf(again) == code, "a code survives being sent once more");
}
