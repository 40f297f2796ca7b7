// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QPair>

#include <functional>

namespace Cloud {

using HeaderList = QList<QPair<QByteArray, QByteArray>>;

/// One HTTP request as the handlers see it: complete, and free of the HTTP library. A value.
struct Request
{
    QByteArray method = "GET";
    QByteArray path;    ///< percent-encoded, from the first "/"
    QByteArray query;   ///< percent-encoded, without the "?"
    HeaderList headers; ///< names in lower case
    QByteArray body;

    /// Value of the first header called @p lowerCaseName; empty when there is none.
    QByteArray header(QByteArrayView lowerCaseName) const;

    /// How often the header called @p lowerCaseName was sent.
    int headerCount(QByteArrayView lowerCaseName) const;
};

/// The answer to one request. A value.
struct Response
{
    int status = 200;
    QByteArray contentType = "application/json; charset=UTF-8";
    QByteArray body;
    HeaderList headers; ///< besides Content-Type and Content-Length

    /// When set, this is no answer yet: called once, with the place to put it, which may be used at any later
    /// moment on the same thread, also when nobody waits for it any more.
    std::function<void(std::function<void(const Response &)>)> later = {};
};

} // namespace Cloud
