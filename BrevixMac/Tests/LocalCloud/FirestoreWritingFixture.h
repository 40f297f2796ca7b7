// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "LocalCloud/ServiceFixture.h"

/// Writes and queries as the local user, in JSON as clients send it.
class FirestoreWritingFixture : public ServiceFixture
{
protected:
    /// @p method on documents path @p path with the JSON @p body.
    Cloud::Request request(const QByteArray &method, const QByteArray &path, const QByteArray &body = {},
                           const QByteArray &query = {}) const
    {
        Cloud::Request request = get(documentsPath(path), query);
        request.method = method;
        request.body = body;
        return request;
    }

    Cloud::Response send(const QByteArray &method, const QByteArray &path, const QByteArray &body = {},
                         const QByteArray &query = {})
    {
        return service->handle(request(method, path, body, query));
    }

    Cloud::Response commit(const QByteArray &writes)
    {
        Cloud::Request commit = get("/v1/projects/demo/databases/(default)/documents:commit");
        commit.method = "POST";
        commit.body = "{\"writes\":[" + writes + "]}";
        return service->handle(commit);
    }

    /// The full name of the local user's document @p path.
    static QByteArray name(const QByteArray &path)
    {
        return "projects/demo/databases/(default)/documents/" + own + path;
    }

    QJsonObject fieldsOf(const QByteArray &path)
    {
        return answer(get(documentsPath(own + path))).value(u"fields").toObject();
    }

    static QJsonObject json(const QByteArray &text) { return QJsonDocument::fromJson(text).object(); }

    /// The same request by somebody else.
    Cloud::Request asSomebodyElse(Cloud::Request request) const
    {
        for (auto &[header, value] : request.headers)
            if (header == "authorization")
                value = "Bearer " + tokenOf(QStringLiteral("somebody-else"));
        return request;
    }

    static const inline QByteArray own = "artifacts/brevix-app/users/local-user/";
    static const inline QByteArray shared = "artifacts/brevix-app/public/data/sharedPrompts/";
};
