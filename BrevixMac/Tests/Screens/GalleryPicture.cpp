// SPDX-License-Identifier: GPL-3.0-or-later
#include "GalleryPicture.h"

#include "BrevixMac/PageFade.h"
#include "BrevixMac/ThemePainting.h"
#include "Support/Waiting.h"

#include <QCoreApplication>
#include <QDir>
#include <QImage>
#include <QPainter>

#include <algorithm>

namespace {

constexpr int margin = 40;
constexpr int deepestNesting = 20; // of layouts, with room to spare

void paintPanel(QPainter &painter, const QRect &place)
{
    const Theme &theme = Theme::shared();
    ThemePainting::fillRounded(painter, place, Theme::panelRadius, theme.color(Theme::Color::surface));
    ThemePainting::strokeRounded(painter, place, Theme::panelRadius, theme.color(Theme::Color::line));
}

} // namespace

void waitUntilStill(const QWidget &screen)
{
    const QList<PageFade *> fades = screen.findChildren<PageFade *>();
    waitUntil([&] {
        return std::none_of(fades.begin(), fades.end(),
                            [](const PageFade *fade) { return fade->isVisible(); });
    });
    // A text that has become longer is told outwards by one nested layout to the next.
    for (int nesting = 0; nesting < deepestNesting; ++nesting)
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
}

void savePicture(QWidget &widget, const QDir &folder, const QString &name, PictureGround ground)
{
    const bool isDark = Theme::shared().scheme() == Theme::Scheme::dark;
    QWidget::RenderFlags flags = QWidget::DrawChildren;
    if (ground == PictureGround::window)
        flags |= QWidget::DrawWindowBackground;
    for (const int ratio : {1, 2}) {
        QImage image((widget.size() + QSize(2 * margin, 2 * margin)) * ratio,
                     QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(isDark ? QColor(0x10, 0x10, 0x18) : QColor(0xd5, 0xd8, 0xe4));
        QPainter painter(&image);
        if (ground == PictureGround::panel)
            paintPanel(painter, QRect(QPoint(margin, margin), widget.size()));
        widget.render(&painter, QPoint(margin, margin), {}, flags);
        painter.end();
        const QString scheme = isDark ? QStringLiteral("dark") : QStringLiteral("light");
        image.save(folder.filePath(QStringLiteral("%1-%2-%3x.png").arg(name, scheme).arg(ratio)));
    }
}
