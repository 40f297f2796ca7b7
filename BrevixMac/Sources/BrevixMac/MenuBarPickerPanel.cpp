// SPDX-License-Identifier: GPL-3.0-or-later
#include "MenuBarPickerPanel.h"

#include "MenuBarPickerView.h"
#include "Theme.h"
#include "ThemePainting.h"

#include <QBitmap>
#include <QCloseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int screenMargin = 8;

QRegion roundedRegion(const QRect &frame)
{
    QPainterPath outline;
    outline.addRoundedRect(frame, Theme::panelRadius, Theme::panelRadius);
    return QRegion(outline.toFillPolygon().toPolygon());
}

} // namespace

MenuBarPickerPanel::MenuBarPickerPanel(AppState &appState)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_view(new MenuBarPickerView(appState, this))
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(QStringLiteral("Brevix"));
    setFixedSize(Theme::panelWidth, Theme::panelHeight);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
    connect(m_view, &MenuBarPickerView::closeRequested, this, &QWidget::hide);
    connect(&Theme::shared(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

void MenuBarPickerPanel::setCompositing(bool isCompositing)
{
    m_isCompositing = isCompositing;
    roundCorners();
}

void MenuBarPickerPanel::roundCorners()
{
    if (m_isCompositing)
        clearMask();
    else
        setMask(roundedRegion(rect()));
}

void MenuBarPickerPanel::fitInto(const QSize &available)
{
    const Theme &theme = Theme::shared();
    const auto fitted = [&](int designed, int room) {
        return std::max(designed, std::min(theme.scaled(designed), room - 2 * screenMargin));
    };
    setFixedSize(fitted(Theme::panelWidth, available.width()),
                 fitted(Theme::panelHeight, available.height()));
}

void MenuBarPickerPanel::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    roundCorners();
}

void MenuBarPickerPanel::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    QPainter painter(this);
    ThemePainting::fillRounded(painter, rect(), Theme::panelRadius, theme.color(Theme::Color::surface));
    ThemePainting::strokeRounded(painter, rect(), Theme::panelRadius, theme.color(Theme::Color::line));
}

void MenuBarPickerPanel::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous())
        Q_EMIT didHide();
}

void MenuBarPickerPanel::closeEvent(QCloseEvent *event)
{
    // The window manager's close only hides; the panel is used again.
    event->ignore();
    hide();
}
