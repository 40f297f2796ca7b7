// SPDX-License-Identifier: GPL-3.0-or-later
#include "InPanelMenu.h"

#include "TextLabel.h"
#include "ThemePainting.h"
#include "ThemedButton.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int padding = 5;
constexpr int shadow = 12; // room around the drawn menu
constexpr qreal shadowStrength = 0.016;
constexpr int edgeGap = 8;

} // namespace

InPanelMenu::InPanelMenu(QWidget *parent)
    : QFrame(parent)
{
    auto *entries = new QVBoxLayout(this);
    constexpr int inset = padding + shadow;
    entries->setContentsMargins(inset, inset, inset, inset);
    entries->setSpacing(0);
    hide();
    connect(&Theme::shared(), &Theme::changed, this, qOverload<>(&InPanelMenu::update));
}

ThemedButton &InPanelMenu::addEntry(const QString &text, const QString &symbol)
{
    auto *entry = new ThemedButton(ThemedButton::Kind::plain, text, this);
    entry->setSymbol(symbol);
    entry->setLeading(true);
    layout()->addWidget(entry);
    connect(entry, &QPushButton::clicked, this, &InPanelMenu::close);
    return *entry;
}

void InPanelMenu::addNote(const QString &text)
{
    auto *note = new TextLabel(Theme::Type::count, Theme::Color::tertiary, TextLabel::Overflow::elide, this);
    note->setText(text);
    note->setContentsMargins(Theme::haloWidth + 8, 0, 8, 0);
    layout()->addWidget(note);
    layout()->addItem(new QSpacerItem(0, 5));
}

void InPanelMenu::openAbove(const QPoint &corner)
{
    m_focusBefore = window()->focusWidget();
    const QSize size = sizeHint();
    const QRect room = parentWidget()->rect().adjusted(edgeGap, edgeGap, -edgeGap, -edgeGap);
    const int x =
        std::clamp(corner.x() - shadow, room.left(), std::max(room.left(), room.right() + 1 - size.width()));
    const int y = std::max(room.top(), corner.y() + shadow - size.height());
    setGeometry(QRect(QPoint(x, y), size));
    show();
    raise();
    qApp->installEventFilter(this);
    // A button has the focus only of somebody who uses the keyboard.
    if (qobject_cast<ThemedButton *>(m_focusBefore.data()))
        moveFocus(1);
}

/// From entry to entry, and round.
void InPanelMenu::moveFocus(int step)
{
    const QList<ThemedButton *> entries = findChildren<ThemedButton *>();
    const auto focused = std::find_if(entries.cbegin(), entries.cend(),
                                      [](const ThemedButton *entry) { return entry->hasFocus(); });
    const qsizetype from = focused != entries.cend() ? focused - entries.cbegin() : step > 0 ? -1 : 0;
    entries.at((from + step + entries.size()) % entries.size())->setFocus(Qt::PopupFocusReason);
}

void InPanelMenu::close()
{
    if (isHidden())
        return;
    qApp->removeEventFilter(this);
    const bool hadFocus = isAncestorOf(window()->focusWidget());
    hide();
    if (hadFocus && m_focusBefore)
        m_focusBefore->setFocus();
    Q_EMIT closed();
}

bool InPanelMenu::eventFilter(QObject *watched, QEvent *event)
{
    const auto *widget = qobject_cast<QWidget *>(watched);
    const bool isOurWindow = widget && widget->window() == window();
    if (isOurWindow && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        close();
        return true;
    }
    const bool isElsewhere = widget && widget != this && !isAncestorOf(widget);
    if (event->type() == QEvent::MouseButtonPress && isElsewhere)
        close();
    return false;
}

void InPanelMenu::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Down)
        moveFocus(1);
    else if (event->key() == Qt::Key_Up)
        moveFocus(-1);
    else
        QFrame::keyPressEvent(event);
}

void InPanelMenu::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    const int radius = theme.scaled(Theme::fieldRadius);
    QPainter painter(this);
    const QRectF frame = QRectF(rect()).adjusted(shadow, shadow, -shadow, -shadow);
    ThemePainting::shadow(painter, frame, radius, shadow, shadowStrength);
    ThemePainting::fillRounded(painter, frame, radius, theme.color(Theme::Color::raised));
    ThemePainting::strokeRounded(painter, frame, radius, theme.color(Theme::Color::line));
}
