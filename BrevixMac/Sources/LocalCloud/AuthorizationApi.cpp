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

/// False when a browser says that another site's page has sent this form.
bool isFromOwnPage(const Request &request)
{
    const QByteArray site = request.header("sec-fetch-site");
    return site.isEmpty() || site == "same-origin";
}

SignInPage pageFor(const AuthorizationRequest &request, const AuthorizationForms &forms)
{
    SignInPage page;
    page.sealedRequest = forms.seal(request);
    page.redirectUri = request.redirectUri;
    return page;
}

} // namespace

AuthorizationApi::AuthorizationApi(Accounts &accounts, AuthorizationCodes &codes, OAuthClient client,
                                   AuthorizationForms forms, Welcome welcome)
    : m_accounts(accounts)
    , m_codes(codes)
    , m_client(std::move(client))
    , m_forms(std::move(forms))
    , m_welcome(std::move(welcome))
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
    SignInPage page = pageFor(reading.request, m_forms);
    page.accounts = m_accounts.list();
    return page.answer();
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
    if (form.hasQueryItem(QStringLiteral("create")))
        return create(*sealed, form);
    const QString uid = formValue(form, QStringLiteral("account"));
    if (m_accounts.find(uid))
        return grant(*sealed, uid);
    SignInPage page = pageFor(*sealed, m_forms);
    page.accounts = m_accounts.list();
    page.problem = QStringLiteral("That account does not exist any more.");
    return page.answer();
}

Response AuthorizationApi::create(const AuthorizationRequest &request, const QUrlQuery &form)
{
    SignInPage page = pageFor(request, m_forms);
    page.name = formValue(form, QStringLiteral("name")).simplified();
    page.email = formValue(form, QStringLiteral("email")).trimmed();
    page.problem = Accounts::problemOf(page.name, page.email);
    if (page.problem.isEmpty() && m_accounts.findByEmail(page.email))
        page.problem = QStringLiteral("There is an account with this e-mail address already.");
    if (!page.problem.isEmpty()) {
        page.accounts = m_accounts.list();
        return page.answer();
    }
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
