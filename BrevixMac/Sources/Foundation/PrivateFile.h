// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Files that only their owner may read. Pure functions over the file system, safe on any thread.
namespace PrivateFile {

/// Puts @p bytes at @p path in place of what is there, with mode 0600: a temporary file beside it, synced and
/// renamed, so that a crash leaves either the old or the new content. Missing folders are made, open to the
/// owner alone. Gives what went wrong, nothing on success.
std::optional<QString> write(const QString &path, const QByteArray &bytes);

} // namespace PrivateFile
