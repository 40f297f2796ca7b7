// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Request.h"

#include <QString>

namespace Cloud {

/// One HTML page of this server in the making: complete without scripts, light and dark by the reader's
/// system. Whatever was not written by a programmer goes through text() or QString::toHtmlEscaped().
struct Page
{
    int status = 200;
    QString title;
    QString body;           ///< HTML of the page's main part
    QByteArray formTargets; ///< where forms may lead, redirects included: a CSP source list; empty: nowhere
    QByteArray script;      ///< empty: the page may run none at all
};

/// @p page under a Content-Security-Policy that allows this page's own style and script by their hashes, and
/// nothing else.
Response pageAnswer(const Page &page);

/// A page that says what went wrong and offers nothing.
Response problemPage(int status, const QString &title, const QString &explanation);

/// The content of a file that is built in for pages.
QByteArray pageResource(const QString &name);

/// The mark of the product, drawn at the size of its context.
QString brandMark();

} // namespace Cloud
