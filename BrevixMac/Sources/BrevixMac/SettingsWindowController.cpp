// SPDX-License-Identifier: GPL-3.0-or-later
#include "SettingsWindowController.h"

#include "ProgrammingError.h"
#include "SettingsView.h"
#include "Theme.h"
#include "WindowSize.h"

#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace {

constexpr int openingHeight = 720;
constexpr int topMargin = 14;

/// A window on the theme's surface.
class SurfaceWindow final : public QWidget
{
protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter(this).fillRect(rect(), Theme::shared().color(Theme::Color::surface));
    }
    void keyPressEvent(QKeyEvent *event) override
    {
        const bool isCloseKey = event->key() == Qt::Key_Escape || event->matches(QKeySequence::Close);
        if (isCloseKey)
            close();
        else
            QWidget::keyPressEvent(event);
    }
};

} // namespace

SettingsWindowController::SettingsWindowController(AppState &appState)
    : m_appState(&appState)
    , m_window(std::make_unique<SurfaceWindow>())
{
    m_window->setWindowTitle(QStringLiteral("Brevix Settings"));
    m_window->setMinimumSize(leastWidth, leastHeight);
    m_window->resize(WindowSize::onScreen(*m_window, {leastWidth, openingHeight}));
    auto *layout = new QVBoxLayout(m_window.get());
    layout->setContentsMargins(0, topMargin, 0, 0);
    m_window->installEventFilter(this);
    connect(&Theme::shared(), &Theme::changed, m_window.get(), qOverload<>(&QWidget::update));
}

SettingsWindowController::SettingsWindowController(QDataStream &)
{
    stopOnArchive();
}

SettingsWindowController::~SettingsWindowController()
{
    m_window->removeEventFilter(this);
}

void SettingsWindowController::show()
{
    if (!m_view) {
        m_view = new SettingsView(*m_appState, m_window.get());
        m_window->layout()->addWidget(m_view);
        m_view->focusFirst(); // the last focus went with the last content
    }
    if (m_window->isMinimized())
        m_window->showNormal();
    m_window->show();
    m_window->raise();
}

bool SettingsWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window.get() && event->type() == QEvent::Close)
        windowWillClose();
    return QObject::eventFilter(watched, event);
}

void SettingsWindowController::windowWillClose()
{
    if (!m_view)
        return;
    // Not deleted here: the key or click that closes the window may come from one of its controls.
    m_view->hide();
    m_window->layout()->removeWidget(m_view);
    m_view->deleteLater();
    m_view.clear();
}

SettingsView *SettingsWindowController::view() const
{
    return m_view;
}
