// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

/// A key pair of the tests' own, and feeds signed with it.
class FeedSigner
{
public:
    /// Another @p seed gives another pair.
    explicit FeedSigner(char seed = 'a');

    QByteArray publicKey() const { return m_publicKey; }
    QByteArray sign(const QByteArray &content) const;

    /// A signed feed of one release.
    QByteArray feed(const QByteArray &version, const QByteArray &published = "2026-03-01T00:00:00Z") const;

    static QByteArray content(const QByteArray &version,
                              const QByteArray &published = "2026-03-01T00:00:00Z");

private:
    QByteArray m_publicKey;
    QByteArray m_secretKey;
};
