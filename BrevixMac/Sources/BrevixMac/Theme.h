// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QFont>
#include <QObject>

#include <optional>

class SystemAppearance;

/// The semantic tokens every screen draws with: colours, type, sizes and motion, in a light and a dark
/// scheme. Follows the desktop's scheme, interface font and motion setting while the program runs. Main
/// thread only; lives as long as the application object.
class Theme final : public QObject
{
    Q_OBJECT

public:
    enum class Scheme { light, dark };

    enum class Color {
        surface, ///< the panel
        raised,  ///< cards and in-panel menus
        sunken,  ///< fields, quiet buttons, tags
        sidebar, ///< the column of filters
        line,    ///< hairlines and borders
        edge,    ///< around what is sunken: clear unless the desktop asks for more contrast
        hover,   ///< a row or plain button under the pointer
        text,
        secondary, ///< previews, captions
        tertiary,  ///< counts, placeholders
        accent,    ///< the one primary action, focus, selection
        accentHover,
        accentPressed,
        accentInk, ///< text and symbols in the accent
        onAccent,
        accentSoft, ///< translucent: selected rows, focus halo, variable marks
        success,
        successSoft,
        warning,
        warningSoft,
        danger,
        dangerSoft,
    };

    enum class Type {
        screenTitle,
        rowTitle,
        body,
        cardTitle,
        preview,
        caption,
        sectionTitle,
        count,
        button,
        chip,
        sidebar,
        sidebarSelected
    };

    // Design sizes in logical pixels at the normal font size.
    static constexpr int panelWidth = 520;
    static constexpr int panelHeight = 640;
    static constexpr int panelRadius = 34;
    static constexpr int cardRadius = 16;
    static constexpr int fieldRadius = 14;
    static constexpr int buttonRadius = 10;
    static constexpr int chipRadius = 8;
    static constexpr int margin = 22;
    static constexpr int haloWidth = 3;
    static constexpr qreal focusBorder = 1.5;
    static constexpr int symbolSize = 17;
    static constexpr int longestMotion = 150; ///< milliseconds

    static Theme &shared();

    Scheme scheme() const { return m_scheme; }
    QColor color(Color token) const { return color(token, m_scheme); }
    static QColor color(Color token, Scheme scheme);

    QFont font(Type type) const;

    /// @p designPixels grown with the desktop's interface font; never smaller than designed.
    int scaled(qreal designPixels) const;
    qreal fontScale() const { return m_fontScale; }

    /// Whether the desktop asks for no animations.
    bool reducedMotion() const;

    /// Fixes the scheme, or follows the desktop again.
    void forceScheme(std::optional<Scheme> scheme);

    /// Fixes the font scale (1 is the normal size), or follows the desktop again.
    void forceFontScale(std::optional<qreal> scale);

    /// Asks the settings portal from now on; without it only the palette is looked at.
    void followDesktop();

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void changed();

private:
    explicit Theme(QObject *parent);
    void update();
    Scheme desktopScheme() const;
    static qreal desktopFontScale();

    SystemAppearance *m_appearance;
    std::optional<Scheme> m_forcedScheme;
    std::optional<qreal> m_forcedFontScale;
    Scheme m_scheme = Scheme::light;
    qreal m_fontScale = 1;
    QString m_family;
};
