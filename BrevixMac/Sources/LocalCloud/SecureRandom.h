// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace Cloud {

/// @p count bytes of the system's cryptographic random source.
QByteArray secureRandomBytes(qsizetype count);

/// @p size letters and digits (ASCII), each drawn evenly.
QString randomIdentifier(qsizetype size);

/// Unpadded base64url (RFC 4648).
QByteArray base64Url(const QByteArray &bytes);

/// A key for one @p purpose that tells nothing about @p key or about its other derivatives.
QByteArray derivedKey(const QByteArray &key, const QByteArray &purpose);

/// True when both are equal; the time taken depends on their lengths only.
bool equalInConstantTime(QByteArrayView left, QByteArrayView right);

} // namespace Cloud
