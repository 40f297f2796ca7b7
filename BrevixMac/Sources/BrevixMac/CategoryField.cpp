// SPDX-License-Identifier: GPL-3.0-or-later
#include "CategoryField.h"

#include "CategoryMenu.h"
#include "FormParts.h"
#include "OneLine.h"
#include "Symbols.h"
#include "ThemePainting.h"

#include <QKeyEvent>
#include <QPainter>

#include <algorithm>

namespace {

constexpr int designHeight = 38;
constexpr int padding = 14;
constexpr int dot = 8;
constexpr int gap = 9;
constexpr int chevron = 14;

} // namespace

CategoryField::CategoryField(QWidget *parent)
    : QAbstractButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleDescription(QStringLiteral("Opens a menu"));
    connect(this, &QAbstractButton::clicked, this, &CategoryField::openMenu);
    connect(&Theme::shared(), &Theme::changed, this, &QWidget::updateGeometry);
    describe();
}

void CategoryField::setCategories(const QList<PromptCategory> &categories, const QString &selectedID)
{
    const bool isListNew = categories != m_categories;
    m_categories = categories;
    m_selectedID = selectedID;
    // A menu of categories that are no more must not be chosen from.
    if (isMenuOpen() && isListNew)
        m_menu->close();
    describe();
}

void CategoryField::describe()
{
    const auto chosen =
        std::find_if(m_categories.cbegin(), m_categories.cend(),
                     [this](const PromptCategory &category) { return category.id == m_selectedID; });
    const bool isChosen = chosen != m_categories.cend();
    setText(isChosen                 ? OneLine::of(chosen->name)
            : m_categories.isEmpty() ? QStringLiteral("No category yet")
                                     : QStringLiteral("Choose a category"));
    setAccessibleName(u"Category: " + text());
    update();
}

CategoryMenu *CategoryField::menu() const
{
    return m_menu;
}

// A menu that was closed lives on for a moment.
bool CategoryField::isMenuOpen() const
{
    return m_menu && !m_menu->isHidden();
}

void CategoryField::openMenu()
{
    if (isMenuOpen() || m_categories.isEmpty())
        return;
    m_menu = new CategoryMenu(m_categories, m_selectedID, *this);
    connect(m_menu, &CategoryMenu::chosen, this, &CategoryField::chosen);
    connect(m_menu, &QObject::destroyed, this, qOverload<>(&QWidget::update));
}

QSize CategoryField::sizeHint() const
{
    const Theme &theme = Theme::shared();
    const int height = std::max(theme.scaled(designHeight),
                                QFontMetrics(theme.font(Theme::Type::body)).height() + theme.scaled(12));
    return {theme.scaled(180), height + 2 * Theme::haloWidth};
}

QSize CategoryField::minimumSizeHint() const
{
    return {100, sizeHint().height()};
}

void CategoryField::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (event->modifiers() != Qt::NoModifier)
            break;
        [[fallthrough]];
    case Qt::Key_Down:
        openMenu();
        return;
    default:
        break;
    }
    QAbstractButton::keyPressEvent(event);
}

void CategoryField::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    const QRectF frame = ThemePainting::controlFrame(*this);
    const int radius = theme.scaled(Theme::fieldRadius);
    QPainter painter(this);
    ThemePainting::fillSunken(painter, frame, radius);
    if (underMouse() && isEnabled())
        ThemePainting::fillRounded(painter, frame, radius, theme.color(Theme::Color::hover));
    qreal left = frame.left() + theme.scaled(padding);
    const auto chosen =
        std::find_if(m_categories.cbegin(), m_categories.cend(),
                     [this](const PromptCategory &category) { return category.id == m_selectedID; });
    const bool isChosen = chosen != m_categories.cend();
    if (isChosen) {
        const QRectF circle(left, frame.center().y() - theme.scaled(dot) / 2.0, theme.scaled(dot),
                            theme.scaled(dot));
        ThemePainting::fillRounded(painter, circle, circle.width() / 2, FormParts::dotColor(*chosen));
        left += theme.scaled(dot + gap);
    }
    const int symbol = theme.scaled(chevron);
    const qreal right = frame.right() - theme.scaled(padding) + 2;
    if (isEnabled())
        Symbols::paint(painter, QStringLiteral("chevron.down"), theme.color(Theme::Color::secondary),
                       QRectF(right - symbol, frame.top(), symbol, frame.height()), symbol);
    painter.setFont(theme.font(Theme::Type::body));
    painter.setPen(theme.color(isChosen ? Theme::Color::text : Theme::Color::tertiary));
    const QRectF room(left, frame.top(), right - symbol - theme.scaled(gap) - left, frame.height());
    painter.drawText(
        room, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
        painter.fontMetrics().elidedText(text(), Qt::ElideRight, static_cast<int>(room.width())));
    if (hasFocus() || isMenuOpen())
        ThemePainting::focusRing(painter, frame, radius);
}
