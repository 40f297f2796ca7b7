// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QDir;
class QString;

/// Draws the states of the editors, in the theme of now, into @p folder; only those whose names contain @p
/// word.
void drawEditors(const QDir &folder, const QString &word);
