// SPDX-License-Identifier: GPL-3.0-or-later
#include "SignInPage.h"

#include "Page.h"

#include <QUrl>

namespace Cloud {

namespace {

/// Browsers hold the redirect after a form to the same list as the form itself.
QByteArray formTargets(const QString &redirectUri)
{
    const QUrl url(redirectUri);
    if (url.scheme() == QLatin1String("http"))
        return "'self' http://" + url.authority(QUrl::FullyEncoded).toLatin1();
    return "'self' " + url.scheme().toLatin1() + ':';
}

QString formStart(const QString &sealedRequest, const QString &attributes = {})
{
    return QStringLiteral("<form method=\"post\" action=\"/o/oauth2/v2/auth\"") + attributes +
           QStringLiteral(">\n<input type=\"hidden\" name=\"request\" value=\"") +
           sealedRequest.toHtmlEscaped() + QStringLiteral("\">\n");
}

/// The first letter of @p account as somebody reads it.
QString initialOf(const Account &account)
{
    const QString name = account.displayName.isEmpty() ? account.email : account.displayName;
    const auto points = name.toUcs4();
    if (points.isEmpty())
        return QStringLiteral("?");
    const char32_t first = points.constFirst();
    return QString::fromUcs4(&first, 1).toUpper().toHtmlEscaped();
}

QString accountButton(const Account &account, bool isFirst)
{
    return QStringLiteral("<li><button name=\"account\" value=\"%1\"%2><span class=\"initial\""
                          " aria-hidden=\"true\">%3</span><span class=\"who\"><span class=\"name\">%4</span>"
                          " <span class=\"mail\">%5</span></span></button></li>\n")
        .arg(account.uid.toHtmlEscaped(), isFirst ? QStringLiteral(" autofocus") : QString(),
             initialOf(account), account.displayName.toHtmlEscaped(), account.email.toHtmlEscaped());
}

QString field(const QString &label, const QString &attributes, const QString &value)
{
    return QStringLiteral("<label>%1<input %2 value=\"%3\" required></label>\n")
        .arg(label, attributes, value.toHtmlEscaped());
}

QString accountList(const SignInPage &page)
{
    if (page.accounts.isEmpty())
        return {};
    QString html = formStart(page.sealedRequest) + QStringLiteral("<ul class=\"accounts\">\n");
    bool isFirst = page.problem.isEmpty();
    for (const Account &account : page.accounts) {
        html += accountButton(account, isFirst);
        isFirst = false;
    }
    return html + QStringLiteral("</ul>\n</form>\n");
}

QString newAccountForm(const SignInPage &page)
{
    const bool isOpen = page.accounts.isEmpty() || !page.problem.isEmpty();
    const QString focus = isOpen ? QStringLiteral(" autofocus") : QString();
    return QStringLiteral("<details%1>\n<summary>New account</summary>\n")
               .arg(isOpen ? QStringLiteral(" open") : QString()) +
           formStart(page.sealedRequest, QStringLiteral(" class=\"fields\"")) +
           field(QStringLiteral("Name"),
                 QStringLiteral("name=\"name\" autocomplete=\"name\" maxlength=\"100\"") + focus, page.name) +
           field(QStringLiteral("E-mail"),
                 QStringLiteral("name=\"email\" type=\"email\" autocomplete=\"email\" maxlength=\"254\""),
                 page.email) +
           QStringLiteral("<button class=\"primary\" name=\"create\" value=\"1\">Create account</button>\n"
                          "</form>\n</details>\n");
}

QString passwordForm(const SignInPage &page)
{
    const QString focus = QStringLiteral(" autofocus");
    const bool knowsEmail = !page.email.isEmpty();
    return formStart(page.sealedRequest, QStringLiteral(" class=\"fields bare\"")) +
           field(QStringLiteral("E-mail"),
                 QStringLiteral("name=\"email\" type=\"email\" autocomplete=\"username\" maxlength=\"254\"") +
                     (knowsEmail ? QString() : focus),
                 page.email) +
           field(QStringLiteral("Password"),
                 QStringLiteral("name=\"password\" type=\"password\" autocomplete=\"current-password\""
                                " maxlength=\"200\"") +
                     (knowsEmail ? focus : QString()),
                 QString()) +
           QStringLiteral("<button class=\"primary\" name=\"login\" value=\"1\">Sign in</button>\n</form>\n");
}

QString problemLine(const QString &problem)
{
    return problem.isEmpty()
               ? QString()
               : QStringLiteral("<p class=\"problem\" role=\"alert\">%1</p>\n").arg(problem.toHtmlEscaped());
}

QString cancelForm(const SignInPage &page)
{
    return formStart(page.sealedRequest) +
           QStringLiteral("<button class=\"plain\" name=\"cancel\" value=\"1\">Cancel</button>\n</form>\n");
}

} // namespace

Response SignInPage::answer() const
{
    const QString lead = asksPassword
                             ? QStringLiteral("Use the account that was made for you on this server.")
                             : QStringLiteral("Choose whose library to open on this computer.");
    const QString note =
        asksPassword
            ? QStringLiteral("This is a Brevix library server, not Google. Nothing is sent to Google.")
            : QStringLiteral(
                  "This page comes from Brevix on this computer, not from Google. The accounts exist "
                  "here only and need no password.");
    return pageAnswer(
        {.status = 200,
         .title = QStringLiteral("Sign in - Brevix"),
         .body = QStringLiteral("<main class=\"card narrow\">\n") + brandMark() +
                 QStringLiteral("<h1>Sign in to Brevix</h1>\n<p class=\"lead\">") + lead +
                 QStringLiteral("</p>\n") + problemLine(problem) +
                 (asksPassword ? passwordForm(*this) : QString(accountList(*this) + newAccountForm(*this))) +
                 cancelForm(*this) + QStringLiteral("<p class=\"note\">") + note +
                 QStringLiteral("</p>\n</main>"),
         .formTargets = formTargets(redirectUri),
         .script = {}});
}

} // namespace Cloud
