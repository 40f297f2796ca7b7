// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>

/// Draws every state of the settings, in the panel and in their window, into @p folder.
void drawSettings(const QDir &folder);
