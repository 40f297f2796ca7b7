// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QDir;
class QString;
class QWidget;

/// What lies behind a widget in its picture, besides the desktop.
enum class PictureGround {
    none,   ///< the widget paints all of itself
    panel,  ///< the picker panel's rounded surface, for a screen without its panel
    window, ///< the widget's own background
};

/// Draws @p widget on a desktop in the theme's scheme as "NAME-SCHEME-1x.png" and "…-2x.png" in @p folder,
/// after its transitions have ended.
void savePicture(QWidget &widget, const QDir &folder, const QString &name,
                 PictureGround ground = PictureGround::none);
