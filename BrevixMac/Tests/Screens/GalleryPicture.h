// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "GalleryCamera.h"

class QDir;

/// Waits until the transitions of @p screen have ended and its layouts are done.
void waitUntilStill(const QWidget &screen);

/// Draws @p widget on a desktop in the theme's scheme as "NAME-SCHEME-1x.png" and "…-2x.png" in @p folder.
void savePicture(QWidget &widget, const QDir &folder, const QString &name, PictureGround ground);
