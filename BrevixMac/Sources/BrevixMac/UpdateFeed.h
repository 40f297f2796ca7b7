// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QUrl>
#include <QVersionNumber>

#include <optional>
#include <variant>

/// A release that a feed names. A value.
struct UpdateRelease
{
    QVersionNumber version;
    QUrl page; ///< where a person reads about it and gets it; always https

    bool operator==(const UpdateRelease &) const = default;
};

/// The releases of this product, as its makers have signed them. docs/updates.md describes the format. A
/// value.
struct UpdateFeed
{
    /// Largest file that is read, in bytes.
    static constexpr qint64 maximumSize = 256LL * 1024;

    /// Length of an Ed25519 public key, in bytes.
    static constexpr qsizetype publicKeySize = 32;

    QDateTime published; ///< orders the feeds
    QList<UpdateRelease> releases;

    /// The one with the highest version; nothing of an empty feed.
    std::optional<UpdateRelease> newest() const;

    /// Reads @p file, whose signature must be of @p publicKey over its exact bytes. Why it cannot be trusted
    /// or understood, for the user, in place of a feed; nothing of an unsigned text is read.
    static std::variant<UpdateFeed, QString> read(const QByteArray &file, const QByteArray &publicKey);
};
