// SPDX-License-Identifier: GPL-3.0-or-later
#include "Page.h"

#include <QCryptographicHash>
#include <QFile>

namespace Cloud {

namespace {

const QByteArray &styleSheet()
{
    static const QByteArray sheet = pageResource(QStringLiteral("pages.css"));
    return sheet;
}

QByteArray hashSource(const QByteArray &content)
{
    return "'sha256-" + QCryptographicHash::hash(content, QCryptographicHash::Sha256).toBase64() + '\'';
}

QByteArray contentSecurityPolicy(const Page &page)
{
    QByteArray policy = "default-src 'none'; style-src " + hashSource(styleSheet());
    if (!page.script.isEmpty())
        policy += "; script-src " + hashSource(page.script);
    return policy + "; form-action " + (page.formTargets.isEmpty() ? "'none'" : page.formTargets) +
           "; base-uri 'none'; frame-ancestors 'none'";
}

} // namespace

QByteArray pageResource(const QString &name)
{
    QFile file(QStringLiteral(":/localcloud/") + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("A page's resource is missing from the program");
    return file.readAll();
}

Response pageAnswer(const Page &page)
{
    Response response;
    response.status = page.status;
    response.contentType = "text/html; charset=UTF-8";
    response.body = "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                    "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                    "<meta name=\"color-scheme\" content=\"light dark\">\n<title>" +
                    page.title.toHtmlEscaped().toUtf8() + "</title>\n<style>" + styleSheet() +
                    "</style>\n</head>\n<body>\n" + page.body.toUtf8();
    if (!page.script.isEmpty())
        response.body += "\n<script>" + page.script + "</script>";
    response.body += "\n</body>\n</html>\n";
    response.headers = {{"Content-Security-Policy", contentSecurityPolicy(page)},
                        {"X-Frame-Options", "DENY"},
                        // "no-referrer" would make browsers send "Origin: null" with the form.
                        {"Referrer-Policy", "same-origin"}};
    return response;
}

Response problemPage(int status, const QString &title, const QString &explanation)
{
    return pageAnswer({.status = status,
                       .title = title + QStringLiteral(" - Brevix"),
                       .body = QStringLiteral("<main class=\"card narrow\">") + brandMark() +
                               QStringLiteral("<h1>") + title.toHtmlEscaped() +
                               QStringLiteral("</h1>\n<p class=\"lead\">") + explanation.toHtmlEscaped() +
                               QStringLiteral("</p>\n</main>"),
                       .formTargets = {},
                       .script = {}});
}

QString brandMark()
{
    static const QString mark = QString::fromUtf8(pageResource(QStringLiteral("mark.svg")));
    return mark;
}

} // namespace Cloud
