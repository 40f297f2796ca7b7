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

namespace {

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
    if (isCompositing)
        clearMask();
    else
        setMask(roundedRegion(rect()));
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
