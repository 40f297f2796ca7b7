// SPDX-License-Identifier: GPL-3.0-or-later
#include "MenuBarController.h"

#include "AppState.h"
#include "BrandGlyph.h"
#include "MenuBarPickerPanel.h"
#include "MenuBarPickerView.h"
#include "Theme.h"

#include "Desktop/StatusItem.h"
#include "Desktop/Workspace.h"

#include <QCoreApplication>
#include <QCursor>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QLayout>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <chrono>

namespace {

constexpr int edgeMargin = 8;
constexpr qreal glyphFontShare = 0.82;
constexpr qreal glyphDrop = 0.06; // below the middle

// A press on the status item also counts as a press outside the panel. Its own signal follows within this
// time, and must not open again what that press has just closed.
constexpr std::chrono::milliseconds pressEcho{400};
constexpr int pressEchoDistance = 64;

MenuBarController *sharedController = nullptr;

QScreen *screenAt(const QPoint &position)
{
    QScreen *screen = QGuiApplication::screenAt(position);
    return screen ? screen : QGuiApplication::primaryScreen();
}

QPixmap glyphPixmap(int size, qreal devicePixelRatio)
{
    const int pixels = static_cast<int>(size * devicePixelRatio);
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(std::max(1, static_cast<int>(pixels * glyphFontShare)));
    font.setBold(true);
    QPainter painter(&pixmap);
    painter.setFont(font);
    painter.setPen(Qt::black);
    painter.drawText(QRectF(0, glyphDrop * pixels, pixels, pixels), Qt::AlignCenter, QStringLiteral("B"));
    painter.end();
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

} // namespace

MenuBarController::MenuBarController(StatusItem &statusItem, Workspace &workspace, EventMonitor &eventMonitor)
    : m_statusItem(statusItem)
    , m_workspace(workspace)
    , m_eventMonitor(eventMonitor)
{
    if (!sharedController)
        sharedController = this;
    connect(&m_statusItem, &StatusItem::pressed, this, &MenuBarController::onStatusItemPressed);
}

MenuBarController::~MenuBarController()
{
    stopOutsideClickMonitor();
    if (m_appState) {
        m_appState->presentPaletteAction = {};
        m_appState->dismissPaletteAction = {};
    }
    if (m_panel)
        disconnect(m_panel.get(), nullptr, this, nullptr);
    if (sharedController == this)
        sharedController = nullptr;
}

MenuBarController *MenuBarController::shared()
{
    return sharedController;
}

void MenuBarController::install(AppState &appState)
{
    if (m_panel)
        return;
    m_appState = &appState;
    Theme::shared().followDesktop();
    m_panel = std::make_unique<MenuBarPickerPanel>(appState);
    connect(m_panel.get(), &MenuBarPickerPanel::didHide, this, &MenuBarController::panelDidHide);
    connect(&Theme::shared(), &Theme::changed, this, [this] {
        if (isPickerVisible())
            position();
    });
    connect(&m_panel->view(), &MenuBarPickerView::quitRequested, this, &MenuBarController::quitRequested);
    connect(&appState.hotkeyService(), &HotkeyService::registrationChanged, this,
            &MenuBarController::updateStatusItem);
    connect(&appState, &AppState::insertionFailed, this, [this] {
        // A paste gives the focus to its target. The offer that now stands in the panel wants the keyboard,
        // unless the user has gone elsewhere meanwhile.
        if (isPickerVisible() && m_appState->isTargetInFront())
            m_workspace.activateOwnWindow(m_panel->windowHandle());
    });
    appState.presentPaletteAction = [this] { showPicker(); };
    appState.dismissPaletteAction = [this] { closePicker(); };

    // Trays here do not tint a template, and theirs may be dark or light: the brand glyph shows on both.
    m_statusItem.setImage(BrandGlyph::icon());
    updateStatusItem();
    m_statusItem.install();
    prepareFirstShow();
}

void MenuBarController::prepareFirstShow()
{
    // What the first show would otherwise pay for: the native window, styles, fonts and the layout.
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        m_panel->fitInto(screen->availableSize());
    m_panel->setCompositing(m_workspace.isCompositing());
    m_panel->winId();
    m_panel->ensurePolished();
    m_panel->layout()->activate();
    // Wrapped texts ask for another height once they know their width; answered now, not while the user
    // looks.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    m_panel->layout()->activate();
    m_panel->grab();
}

void MenuBarController::updateStatusItem()
{
    const std::optional<HotkeyProblem> problem = m_appState ? m_appState->hotkeyProblem() : std::nullopt;
    m_statusItem.setToolTip(problem ? u"Brevix: " + problem->reason : QStringLiteral("Brevix"));
}

void MenuBarController::onStatusItemPressed(QPoint near)
{
    m_pressedNear = near;
    const bool echoes = m_closedByPress.isValid() &&
                        std::chrono::milliseconds(m_closedByPress.elapsed()) < pressEcho &&
                        (near.isNull() || (near - m_closingPress).manhattanLength() <= pressEchoDistance);
    m_closedByPress.invalidate();
    if (!echoes)
        togglePicker();
}

void MenuBarController::togglePicker()
{
    if (isPickerVisible()) {
        closePicker();
        return;
    }
    if (!m_appState)
        return;
    m_appState->setPickerAutoFocusSearch(false);
    m_appState->handlePaletteInvocation(true);
}

void MenuBarController::togglePickerWithFocus()
{
    if (isPickerVisible())
        closePicker();
    else if (m_appState)
        m_appState->handleHotkey();
}

bool MenuBarController::isPickerVisible() const
{
    return m_panel && m_panel->isVisible();
}

void MenuBarController::showPicker()
{
    if (!m_appState || !m_panel)
        return;
    m_panel->setCompositing(m_workspace.isCompositing());
    m_panel->view().appear();
    position();
    m_panel->show();
    m_workspace.joinAllDesktops(m_panel->windowHandle());
    m_panel->raise();
    if (m_appState->pickerAutoFocusSearch())
        m_workspace.activateOwnWindow(m_panel->windowHandle());
    m_appState->setPalettePresented(true);
    startOutsideClickMonitor();
}

void MenuBarController::closePicker()
{
    if (isPickerVisible())
        m_panel->hide();
    else
        panelDidHide();
}

void MenuBarController::panelDidHide()
{
    stopOutsideClickMonitor();
    m_pressedNear.reset();
    if (m_appState)
        m_appState->setPalettePresented(false);
}

void MenuBarController::position()
{
    std::optional<QRect> button = m_statusItem.geometry();
    if (!button && m_pressedNear && !m_pressedNear->isNull())
        button = QRect(*m_pressedNear, QSize(1, 1));
    const QScreen *screen = screenAt(button ? button->center() : QCursor::pos());
    if (!screen)
        return;
    const QRect visible = screen->availableGeometry();
    // Without a place of its own the panel opens below the middle of the screen's upper edge.
    const QRect anchor = button.value_or(QRect(visible.center().x(), visible.top(), 1, 0));
    m_panel->fitInto(visible.size());
    m_panel->move(panelPosition(anchor, m_panel->size(), visible));
}

QPoint MenuBarController::panelPosition(const QRect &button, const QSize &panelSize,
                                        const QRect &visibleFrame)
{
    const int width = panelSize.width();
    const int height = panelSize.height();
    const int lowest = visibleFrame.top() + visibleFrame.height() - edgeMargin - height;
    int x = button.left() + (button.width() - width) / 2;
    int y = button.top() + button.height() + edgeMargin;
    if (y > lowest)
        y = button.top() - edgeMargin - height;
    // A panel larger than the space keeps its upper and its right edge inside.
    x = std::min(std::max(x, visibleFrame.left() + edgeMargin),
                 visibleFrame.left() + visibleFrame.width() - width - edgeMargin);
    y = std::max(std::min(y, lowest), visibleFrame.top() + edgeMargin);
    return {x, y};
}

void MenuBarController::startOutsideClickMonitor()
{
    if (m_outsideClickMonitor)
        return;
    m_outsideClickMonitor =
        m_eventMonitor.addGlobalMonitor(MonitoredEvent::pointerPress, [this](const MonitoredEvent &event) {
            // Closing ends the subscription, which must not happen while its handler runs.
            QTimer::singleShot(0, this, [this, where = event.position] { onPressElsewhere(where); });
        });
}

void MenuBarController::onPressElsewhere(QPoint where)
{
    if (!isPickerVisible() || m_panel->frameGeometry().contains(where))
        return;
    m_closingPress = where;
    m_closedByPress.start();
    closePicker();
}

void MenuBarController::stopOutsideClickMonitor()
{
    m_outsideClickMonitor.reset();
}

QIcon MenuBarController::brevixTemplateGlyph(int size)
{
    QIcon icon;
    for (const qreal ratio : {1.0, 2.0, 3.0})
        icon.addPixmap(glyphPixmap(size, ratio));
    icon.setIsMask(true);
    return icon;
}
