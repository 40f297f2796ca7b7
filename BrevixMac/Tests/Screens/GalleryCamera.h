// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BrevixMac/Theme.h"

#include <QString>

#include <array>
#include <functional>

class QWidget;

/// What lies behind a widget in its picture, besides the desktop.
enum class PictureGround {
    none,   ///< the widget paints all of itself
    panel,  ///< the picker panel's rounded surface, for a screen without its panel
    window, ///< the widget's own background
};

/// What becomes of every state of every screen that the gallery arranges.
struct Camera
{
    /// Which states are wanted; the others are not even arranged.
    std::function<bool(const QString &name)> wants;
    /// Called while the state is on screen.
    std::function<void(QWidget &screen, const QString &name, PictureGround ground)> shoot;
};

/// The font at twice its size as long as this lives.
class TwiceTheFont
{
public:
    TwiceTheFont() { Theme::shared().forceFontScale(2); }
    ~TwiceTheFont() { Theme::shared().forceFontScale(m_before); }

    TwiceTheFont(const TwiceTheFont &) = delete;
    TwiceTheFont &operator=(const TwiceTheFont &) = delete;

private:
    qreal m_before = Theme::shared().fontScale();
};

// Each arranges the states of one screen after the other.
void drawPicker(const Camera &camera);
void drawLibrary(const Camera &camera);
void drawPalette(const Camera &camera);
void drawPromptEditors(const Camera &camera);
void drawSkillEditor(const Camera &camera);
void drawSettings(const Camera &camera);
/// A few of them as on a desktop that asks for more contrast.
void drawMoreContrast(const Camera &camera);

struct GalleryPart
{
    const char *name;
    void (*draw)(const Camera &camera);
};

/// All there is.
inline constexpr std::array galleryParts{
    GalleryPart{"picker", &drawPicker},
    GalleryPart{"library", &drawLibrary},
    GalleryPart{"palette", &drawPalette},
    GalleryPart{"promptEditors", &drawPromptEditors},
    GalleryPart{"skillEditor", &drawSkillEditor},
    GalleryPart{"settings", &drawSettings},
    GalleryPart{"moreContrast", &drawMoreContrast},
};
