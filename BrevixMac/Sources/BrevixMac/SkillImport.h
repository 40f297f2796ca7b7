// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class QMimeData;

/// The rules of importing a skill. Pure functions.
namespace SkillImport {

/// The media types that the file chooser accepts: plain text, any text, and the type of the extension "md"
/// when this system knows one.
QStringList skillImportTypes();

/// The same for a file chooser: one filter for all of them, with its patterns, and one for every file, since
/// many texts have no extension.
QStringList nameFilters();

/// The text of the first line that begins with "#", without "#" and blanks at its ends; @p fallback when
/// there is none, or nothing is left of it.
QString suggestedTitle(const QString &text, const QString &fallback);

/// The path of the first file on this machine that @p data names, when it is about files at all.
std::optional<QString> localFile(const QMimeData &data);

} // namespace SkillImport
