// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace Cloud {

/// @p count bytes of the system's cryptographic random source.
QByteArray secureRandomBytes(qsizetype count);

/// Unpadded base64url (RFC 4648).
QByteArray base64Url(const QByteArray &bytes);

/// True when both are equal; the time taken depends on their lengths only.
bool equalInConstantTime(QByteArrayView left, QByteArrayView right);

} // namespace Cloud
