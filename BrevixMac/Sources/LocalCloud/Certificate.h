// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSslConfiguration>
#include <QString>

#include <optional>

namespace Cloud::Certificate {

/// The configuration of an encrypting server from two files in PEM form. Nothing when they cannot be used;
/// @p problem says why. The key must belong to the first certificate and not be readable by everybody.
std::optional<QSslConfiguration> read(const QString &certificateFile, const QString &keyFile,
                                      QString &problem);

} // namespace Cloud::Certificate
