// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "LocalCloud/ServiceFixture.h"

#include <QUrl>
#include <QUrlQuery>

/// A browser and a client program at the sign-in of a server without a network.
class SignInFixture : public ServiceFixture
{
protected:
    static const QByteArray verifier;
    static const QByteArray redirectUri;

    /// The query of a good authorization request.
    static QUrlQuery goodQuery();

    Cloud::Response openPage(const QUrlQuery &query) const;
    Cloud::Response openPage() const { return openPage(goodQuery()); }

    /// Sends a form of @p page with @p fields added.
    Cloud::Response submit(const Cloud::Response &page, const QByteArray &fields) const;

    /// The whole way through the browser as the local user; gives the code.
    QByteArray freshCode() const;

    /// The token request for @p code with the fields of @p replaced in place of the good ones.
    Cloud::Response exchange(const QByteArray &code, const QMap<QString, QString> &replaced = {}) const;

    /// The identity provider's ID token of the account @p uid.
    QString providerToken(const QString &uid = QStringLiteral("local-user")) const;

    Cloud::Response identityToolkit(const QByteArray &operation, const QJsonObject &body,
                                    const QByteArray &prefix = {}) const;
    Cloud::Response signInWith(const QString &idToken) const;
};

/// The query of the address that @p response redirects to; empty when it redirects to none.
QUrlQuery redirectedQuery(const Cloud::Response &response);
QByteArray headerOf(const Cloud::Response &response, const QByteArray &name);
QString valueOf(const QUrlQuery &query, const QString &name);
