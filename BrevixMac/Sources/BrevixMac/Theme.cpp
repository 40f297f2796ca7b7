// SPDX-License-Identifier: GPL-3.0-or-later
#include "Theme.h"

#include "SystemAppearance.h"

#include <QApplication>
#include <QEvent>
#include <QFontDatabase>
#include <QFontInfo>
#include <QPalette>
#include <QPointer>
#include <QScreen>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

struct ColorPair
{
    QRgb light;
    QRgb dark;
};

constexpr QRgb withAlpha(QRgb color, qreal opacity)
{
    return (color & 0xffffffu) | (static_cast<QRgb>(qRound(opacity * 255)) << 24);
}

// The tertiary inks are dark enough to be read on every background: 4.5 to 1.
constexpr ColorPair pair(Theme::Color token)
{
    switch (token) {
    case Theme::Color::surface:
        return {0xfffbfbfd, 0xff1c1c22};
    case Theme::Color::raised:
        return {0xffffffff, 0xff26262e};
    case Theme::Color::sunken:
        return {0xfff1f1f5, 0xff15151a};
    case Theme::Color::sidebar:
        return {0xfff5f5f9, 0xff18181d};
    case Theme::Color::line:
        return {withAlpha(0x17171c, 0.09), withAlpha(0xffffff, 0.09)};
    case Theme::Color::edge:
        return {0, 0};
    case Theme::Color::hover:
        return {withAlpha(0x17171c, 0.045), withAlpha(0xffffff, 0.055)};
    case Theme::Color::text:
        return {0xff17171c, 0xfff3f3f7};
    case Theme::Color::secondary:
        return {0xff5f5f6b, 0xffb3b3c0};
    case Theme::Color::tertiary:
        return {0xff6b6b77, 0xff8e8e9a};
    case Theme::Color::accent:
        return {0xff7c4df0, 0xff9b78ff};
    case Theme::Color::accentHover:
        return {0xff6f3fe6, 0xffaa8cff};
    case Theme::Color::accentPressed:
        return {0xff6234d6, 0xff8b66f2};
    case Theme::Color::accentInk:
        return {0xff6a3ce0, 0xffa78bff};
    case Theme::Color::onAccent:
        return {0xffffffff, 0xff16121f};
    case Theme::Color::accentSoft:
        return {withAlpha(0x7c4df0, 0.11), withAlpha(0x9b78ff, 0.18)};
    case Theme::Color::success:
        return {0xff12875a, 0xff4cc98f};
    case Theme::Color::successSoft:
        return {withAlpha(0x12875a, 0.11), withAlpha(0x4cc98f, 0.14)};
    case Theme::Color::warning:
        return {0xffb45f06, 0xfff0a243};
    case Theme::Color::warningSoft:
        return {withAlpha(0xb45f06, 0.10), withAlpha(0xf0a243, 0.13)};
    case Theme::Color::danger:
        return {0xffc8322b, 0xffff7a70};
    case Theme::Color::dangerSoft:
        return {withAlpha(0xc8322b, 0.10), withAlpha(0xff7a70, 0.14)};
    }
    return {};
}

/// The same for desktops that ask for more contrast: borders that can be seen, and no faint inks.
constexpr ColorPair strongPair(Theme::Color token)
{
    switch (token) {
    case Theme::Color::surface:
    case Theme::Color::raised:
        return {0xffffffff, 0xff0d0d11};
    case Theme::Color::sunken:
    case Theme::Color::sidebar:
        return {0xffececf1, 0xff000000};
    case Theme::Color::line:
    case Theme::Color::edge:
        return {withAlpha(0x000000, 0.62), withAlpha(0xffffff, 0.66)};
    case Theme::Color::hover:
        return {withAlpha(0x17171c, 0.10), withAlpha(0xffffff, 0.14)};
    case Theme::Color::text:
        return {0xff000000, 0xffffffff};
    case Theme::Color::secondary:
    case Theme::Color::tertiary:
        return {0xff2b2b33, 0xffe4e4ec};
    case Theme::Color::accent:
    case Theme::Color::accentInk:
        return {0xff4c1fc4, 0xffc2abff};
    case Theme::Color::accentSoft:
        return {withAlpha(0x4c1fc4, 0.18), withAlpha(0xc2abff, 0.30)};
    default:
        return pair(token);
    }
}

struct TypeSpec
{
    qreal pixels;
    QFont::Weight weight;
};

constexpr TypeSpec spec(Theme::Type type)
{
    switch (type) {
    case Theme::Type::screenTitle:
        return {17, QFont::Bold};
    case Theme::Type::rowTitle:
        return {14, QFont::DemiBold};
    case Theme::Type::body:
        return {14, QFont::Normal};
    case Theme::Type::cardTitle:
        return {13, QFont::DemiBold};
    case Theme::Type::preview:
        return {12.5, QFont::Normal};
    case Theme::Type::caption:
        return {12, QFont::Normal};
    case Theme::Type::sectionTitle:
        return {12, QFont::DemiBold};
    case Theme::Type::count:
        return {11.5, QFont::Normal};
    case Theme::Type::button:
        return {12.5, QFont::DemiBold};
    case Theme::Type::chip:
        return {10.5, QFont::DemiBold};
    case Theme::Type::sidebar:
        return {13, QFont::Medium};
    case Theme::Type::sidebarSelected:
        return {13, QFont::DemiBold};
    }
    return {14, QFont::Normal};
}

constexpr qreal normalFontPixels = 14;
constexpr qreal largestFontScale = 2.5;

} // namespace

Theme::Theme(QObject *parent)
    : QObject(parent)
    , m_appearance(new SystemAppearance(this))
{
    connect(m_appearance, &SystemAppearance::changed, this, &Theme::update);
    connect(m_appearance, &SystemAppearance::contrastChanged, this, &Theme::changed);
    qApp->installEventFilter(this);
    update();
}

Theme &Theme::shared()
{
    static QPointer<Theme> theme;
    if (!theme)
        theme = new Theme(qApp);
    return *theme;
}

QColor Theme::color(Color token, Scheme scheme)
{
    const bool isStrong = shared().m_appearance->prefersMoreContrast();
    const ColorPair colors = isStrong ? strongPair(token) : pair(token);
    return QColor::fromRgba(scheme == Scheme::dark ? colors.dark : colors.light);
}

QFont Theme::font(Type type) const
{
    const TypeSpec typeSpec = spec(type);
    const QScreen *screen = QGuiApplication::primaryScreen();
    const qreal dotsPerInch = screen ? screen->logicalDotsPerInchY() : 96;
    QFont font(m_family);
    font.setPointSizeF(typeSpec.pixels * m_fontScale * 72 / dotsPerInch);
    font.setWeight(typeSpec.weight);
    return font;
}

int Theme::scaled(qreal designPixels) const
{
    return static_cast<int>(std::lround(designPixels * m_fontScale));
}

bool Theme::reducedMotion() const
{
    return m_appearance->reducedMotion();
}

void Theme::forceScheme(std::optional<Scheme> scheme)
{
    m_forcedScheme = scheme;
    update();
}

void Theme::forceFontScale(std::optional<qreal> scale)
{
    m_forcedFontScale = scale;
    update();
}

void Theme::followDesktop()
{
    m_appearance->start();
}

bool Theme::eventFilter(QObject *watched, QEvent *event)
{
    const bool isApplicationChange =
        event->type() == QEvent::ApplicationPaletteChange || event->type() == QEvent::ApplicationFontChange;
    if (isApplicationChange && watched == qApp)
        update();
    return false;
}

void Theme::update()
{
    const Scheme scheme = m_forcedScheme.value_or(desktopScheme());
    const qreal fontScale = m_forcedFontScale.value_or(desktopFontScale());
    const QString inter = QStringLiteral("Inter");
    const QString family = QFontDatabase::hasFamily(inter) ? inter : QApplication::font().family();
    if (scheme == m_scheme && qFuzzyCompare(fontScale, m_fontScale) && family == m_family)
        return;
    m_scheme = scheme;
    m_fontScale = fontScale;
    m_family = family;
    Q_EMIT changed();
}

Theme::Scheme Theme::desktopScheme() const
{
    if (const auto prefersDark = m_appearance->prefersDark())
        return *prefersDark ? Scheme::dark : Scheme::light;
    const QPalette palette = QApplication::palette();
    const bool isDark =
        palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
    return isDark ? Scheme::dark : Scheme::light;
}

qreal Theme::desktopFontScale()
{
    return std::clamp(QFontInfo(QApplication::font()).pixelSize() / normalFontPixels, qreal(1),
                      largestFontScale);
}
