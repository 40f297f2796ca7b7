// SPDX-License-Identifier: GPL-3.0-or-later
#include "AuthorizationApi.h"

#include "Accounts.h"
#include "Answers.h"
#include "Form.h"
#include "Page.h"
#include "SignInPage.h"

#include <utility>

namespace Cloud {

namespace {

Response redirect(const QByteArray &url)
{
    Response response;
    response.status = 303;
    response.contentType = "text/plain; charset=UTF-8";
    response.headers = {{"Location", url}, {"Referrer-Policy", "same-origin"}};
    return response;
}

Response redirectWithError(const AuthorizationRequest &request, const char *error)
{
    return redirect(request.redirectUrl(QStringLiteral("error"), QLatin1String(error)));
}

const QString wrongLogIn = QStringLiteral("The e-mail address or the password is wrong.");

QString tooManyTries(std::chrono::seconds wait)
{
    return wait.count() == 1 ? QStringLiteral("Too many tries. Please wait a second.")
                             : QStringLiteral("Too many tries. Please wait %1 seconds.").arg(wait.count());
}

/// False when a browser says that another site's page has sent this form.
bool isFromOwnPage(const Request &request)
{
    const QByteArray site = request.header("sec-fetch-site");
    return site.isEmpty() || site == "same-origin";
}

} // namespace

AuthorizationApi::AuthorizationApi(Accounts &accounts, AuthorizationCodes &codes, OAuthClient client,
                                   AuthorizationForms forms, Entry entry, const Clock &clock, Welcome welcome)
    : m_accounts(accounts)
    , m_codes(codes)
    , m_client(std::move(client))
    , m_forms(std::move(forms))
    , m_welcome(std::move(welcome))
    , m_throttle(clock)
    , m_passwords(entry == Entry::password ? std::make_unique<PasswordChecks>() : nullptr)
{
}

Response AuthorizationApi::handle(const Request &request)
{
    if (request.method == "GET")
        return page(request);
    if (request.method == "POST")
        return submit(request);
    return unimplemented();
}

Response AuthorizationApi::page(const Request &request) const
{
    const AuthorizationReading reading = readAuthorizationRequest(parseForm(request.query), m_client);
    if (!reading.problem.isEmpty())
        return problemPage(400, QStringLiteral("Sign-in was stopped"), reading.problem);
    if (reading.error)
        return redirectWithError(reading.request, reading.error);
    return pageFor(reading.request).answer();
}

Response AuthorizationApi::submit(const Request &request)
{
    const QUrlQuery form = parseForm(request.body);
    const auto sealed = m_forms.open(formValue(form, QStringLiteral("request")));
    if (!isFromOwnPage(request) || !sealed)
        return problemPage(400, QStringLiteral("Sign-in has expired"),
                           QStringLiteral("Please start it again from the program."));
    if (form.hasQueryItem(QStringLiteral("cancel")))
        return redirectWithError(*sealed, "access_denied");
    if (m_passwords)
        return logIn(*sealed, form);
    if (form.hasQueryItem(QStringLiteral("create")))
        return create(*sealed, form);
    return choose(*sealed, form);
}

Response AuthorizationApi::choose(const AuthorizationRequest &request, const QUrlQuery &form)
{
    const QString uid = formValue(form, QStringLiteral("account"));
    if (m_accounts.find(uid))
        return grant(request, uid);
    SignInPage page = pageFor(request);
    page.problem = QStringLiteral("That account does not exist any more.");
    return page.answer();
}

/// Whether the address or the password is wrong shows neither in the answer nor in the time it takes. What no
/// account can have is neither looked up nor remembered.
Response AuthorizationApi::logIn(const AuthorizationRequest &request, const QUrlQuery &form)
{
    const QString email = formValue(form, QStringLiteral("email")).trimmed();
    const QString password = formValue(form, QStringLiteral("password"));
    if (email.size() > Accounts::longestEmail || password.size() > longestPassword)
        return refuseLogIn(request, email.left(Accounts::longestEmail), wrongLogIn);
    const auto wait = m_throttle.waitFor(email);
    if (wait.count() > 0)
        return refuseLogIn(request, email, tooManyTries(wait));
    const auto account = m_accounts.findByEmail(email);
    const QByteArray hash = account ? m_accounts.passwordHash(account->uid) : QByteArray();
    Response response;
    response.later = [=, this](const std::function<void(const Response &)> &reply) {
        const auto finish = [this, request, email, account, reply](bool matches) {
            reply(finishLogIn(request, email, account, matches));
        };
        if (m_passwords->start(hash, password, finish))
            m_throttle.tried(email);
        else
            reply(refuseLogIn(request, email, QStringLiteral("The server is busy. Please try again.")));
    };
    return response;
}

Response AuthorizationApi::finishLogIn(const AuthorizationRequest &request, const QString &email,
                                       const std::optional<Account> &account, bool matches)
{
    if (matches && account) {
        m_throttle.succeeded(email);
        return grant(request, account->uid);
    }
    return refuseLogIn(request, email, wrongLogIn);
}

Response AuthorizationApi::refuseLogIn(const AuthorizationRequest &request, const QString &email,
                                       const QString &problem) const
{
    SignInPage page = pageFor(request);
    page.email = email;
    page.problem = problem;
    return page.answer();
}

SignInPage AuthorizationApi::pageFor(const AuthorizationRequest &request) const
{
    SignInPage page;
    page.sealedRequest = m_forms.seal(request);
    page.redirectUri = request.redirectUri;
    page.asksPassword = m_passwords != nullptr;
    if (!page.asksPassword) // with passwords, who has an account is nobody's business
        page.accounts = m_accounts.list();
    return page;
}

Response AuthorizationApi::create(const AuthorizationRequest &request, const QUrlQuery &form)
{
    SignInPage page = pageFor(request);
    page.name = formValue(form, QStringLiteral("name")).simplified();
    page.email = formValue(form, QStringLiteral("email")).trimmed();
    page.problem = Accounts::problemOf(page.name, page.email);
    if (page.problem.isEmpty() && m_accounts.findByEmail(page.email))
        page.problem = QStringLiteral("There is an account with this e-mail address already.");
    if (!page.problem.isEmpty())
        return page.answer();
    const Account account = m_accounts.create(page.name, page.email);
    m_welcome(account);
    return grant(request, account.uid);
}

Response AuthorizationApi::grant(const AuthorizationRequest &request, const QString &uid)
{
    const QByteArray code = m_codes.issue(uid, request);
    return redirect(request.redirectUrl(QStringLiteral("code"), QString::fromLatin1(code)));
}

} // namespace Cloud
