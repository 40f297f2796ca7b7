// SPDX-License-Identifier: GPL-3.0-or-later
#include "FuzzTarget.h"

#include "FuzzedServer.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

using Cloud::Request;
using Cloud::Response;

namespace {

constexpr int mostRequests = 8;
const QByteArray divider = "\n----\n";

/// "METHOD target", header lines, an empty line, the body. A Host header is added when there is none, because
/// few requests without a good one get any further.
Request parsed(const QByteArray &text)
{
    qsizetype headSize = text.indexOf("\n\n");
    headSize = headSize < 0 ? text.size() : headSize;
    QList<QByteArray> lines = text.left(headSize).split('\n');
    const QList<QByteArray> first = lines.takeFirst().split(' ');
    const QByteArray target = first.value(1);
    const qsizetype mark = target.indexOf('?');

    Request request;
    request.method = first.value(0);
    request.path = mark < 0 ? target : target.left(mark);
    request.query = mark < 0 ? QByteArray() : target.mid(mark + 1);
    for (const QByteArray &line : std::as_const(lines)) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0)
            request.headers.emplaceBack(line.left(colon).toLower(), line.mid(colon + 1).trimmed());
    }
    if (request.headerCount("host") == 0)
        request.headers.emplaceBack("host", FuzzedServer::host);
    request.body = text.mid(headSize + 2);
    return request;
}

bool isOneLine(const QByteArray &text)
{
    return !text.contains('\r') && !text.contains('\n') && !text.contains('\0');
}

void requireProper(const Request &request, const Response &response)
{
    require(!response.later, "without a model and passwords every answer is known at once");
    require(response.status >= 200 && (response.status < 500 || response.status == 501),
            "no request brings the server into trouble");
    require(isOneLine(response.contentType), "a content type is one line");
    for (const auto &[name, value] : response.headers)
        require(isOneLine(name) && isOneLine(value), "no header is divided by what a client sent");
    if (response.contentType.startsWith("application/json"))
        require(!QJsonDocument::fromJson(response.body).isNull(), "an answer in JSON is JSON");
    require(!response.contentType.startsWith("text/html") || !response.body.contains("<foreign"),
            "no page holds the markup of others");
    const QByteArray path = QByteArray::fromPercentEncoding(request.path);
    const bool isShared = request.method == "GET" && path.contains("/public/data/");
    require(!path.contains("/documents") || isShared || response.status >= 400 ||
                request.headerCount("authorization") > 0,
            "only shared documents are for those who are not signed in");
}

/// What was written is what is read.
void requireStored(FuzzedServer &server, const Request &written, const Response &response)
{
    const QJsonObject document = QJsonDocument::fromJson(response.body).object();
    if (response.status != 200 || !document.contains(u"createTime") ||
        (written.method != "PATCH" && written.method != "POST"))
        return;
    Request reading = written;
    reading.method = "GET";
    reading.path = "/v1/" + QUrl::toPercentEncoding(document.value(u"name").toString(), "/");
    reading.query.clear();
    reading.body.clear();
    const Response read = server.handle(reading);
    require(read.status == 200 && QJsonDocument::fromJson(read.body).object() == document,
            "a document is read as its writing was answered");
}

} // namespace

void readForeignBytes(const QByteArray &bytes)
{
    static FuzzedServer server;
    server.reset();
    QByteArray rest = bytes;
    for (int i = 0; i < mostRequests && !rest.isEmpty(); ++i) {
        const qsizetype end = rest.indexOf(divider);
        const Request request = parsed(server.withSecrets(end < 0 ? rest : rest.left(end)));
        rest = end < 0 ? QByteArray() : rest.mid(end + divider.size());
        const Response response = server.handle(request);
        requireProper(request, response);
        requireStored(server, request, response);
        server.learn(response);
    }
}
