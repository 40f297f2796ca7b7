// SPDX-License-Identifier: GPL-3.0-or-later
#include "CategoryMenu.h"

#include "FormParts.h"
#include "OneLine.h"
#include "Symbols.h"
#include "ThemePainting.h"
#include "ThinScrollBar.h"

#include <QApplication>
#include <QKeyEvent>
#include <QListWidget>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int colorRole = Qt::UserRole;
constexpr int idRole = Qt::UserRole + 1;
constexpr int rowHeight = 34;
constexpr int padding = 5;
constexpr int edgeGap = 10;
constexpr int sidePadding = 9;
constexpr int dot = 8;
constexpr int gap = 9;
constexpr int mark = 14;
constexpr int mostRows = 8;
constexpr int gapBelowField = 2;

/// A coloured dot, the category's name, and a mark at the chosen one.
class CategoryDelegate final : public QStyledItemDelegate
{
public:
    CategoryDelegate(QString chosenID, QObject *parent)
        : QStyledItemDelegate(parent)
        , m_chosenID(std::move(chosenID))
    {
    }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const override
    {
        const int height = std::max(Theme::shared().scaled(rowHeight), option.fontMetrics.height() + 12);
        return {0, height};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const Theme &theme = Theme::shared();
        const QRectF row = option.rect;
        const int radius = theme.scaled(Theme::buttonRadius);
        if (option.state.testFlag(QStyle::State_Selected))
            ThemePainting::fillRounded(*painter, row, radius, theme.color(Theme::Color::accentSoft));
        else if (option.state.testFlag(QStyle::State_MouseOver))
            ThemePainting::fillRounded(*painter, row, radius, theme.color(Theme::Color::hover));
        const int size = theme.scaled(dot);
        const QRectF circle(row.left() + theme.scaled(sidePadding), row.center().y() - size / 2.0, size,
                            size);
        ThemePainting::fillRounded(*painter, circle, size / 2.0, index.data(colorRole).value<QColor>());
        const int markSize = theme.scaled(mark);
        const QRectF markArea(row.right() - theme.scaled(sidePadding) - markSize, row.top(), markSize,
                              row.height());
        if (index.data(idRole).toString() == m_chosenID)
            Symbols::paint(*painter, QStringLiteral("checkmark"), theme.color(Theme::Color::accent), markArea,
                           markSize);
        const qreal left = circle.right() + theme.scaled(gap);
        const QRectF room(left, row.top(), markArea.left() - theme.scaled(gap) - left, row.height());
        painter->setFont(option.font);
        painter->setPen(theme.color(Theme::Color::text));
        painter->drawText(room, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                          option.fontMetrics.elidedText(index.data().toString(), Qt::ElideRight,
                                                        static_cast<int>(room.width())));
    }

private:
    QString m_chosenID;
};

void fill(QListWidget &list, const QList<PromptCategory> &categories, const QString &selectedID)
{
    for (const PromptCategory &category : categories) {
        auto *item = new QListWidgetItem(OneLine::of(category.name), &list);
        item->setData(colorRole, FormParts::dotColor(category));
        item->setData(idRole, category.id);
        if (category.id == selectedID)
            list.setCurrentItem(item);
    }
    if (!list.currentItem())
        list.setCurrentRow(0);
}

} // namespace

CategoryMenu::CategoryMenu(const QList<PromptCategory> &categories, const QString &selectedID, QWidget &field)
    : QFrame(field.window())
    , m_field(&field)
    , m_list(new QListWidget(this))
{
    setAccessibleName(QStringLiteral("Categories"));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setAccessibleName(QStringLiteral("Categories"));
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setVerticalScrollBar(new ThinScrollBar(m_list));
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setMouseTracking(true);
    m_list->setUniformItemSizes(true);
    m_list->setItemDelegate(new CategoryDelegate(selectedID, m_list));
    m_list->viewport()->setAutoFillBackground(false);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(padding, padding, padding, padding);
    layout->addWidget(m_list);
    connect(m_list, &QListWidget::itemClicked, this, &CategoryMenu::choose);
    connect(&Theme::shared(), &Theme::changed, this, &CategoryMenu::onThemeChanged);
    onThemeChanged();
    fill(*m_list, categories, selectedID);
    place();
    show();
    raise();
    m_list->scrollToItem(m_list->currentItem());
    m_list->setFocus(Qt::PopupFocusReason);
    qApp->installEventFilter(this);
}

void CategoryMenu::onThemeChanged()
{
    m_list->setFont(Theme::shared().font(Theme::Type::body));
    QPalette colors = m_list->palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    m_list->setPalette(colors);
    update();
}

/// Under the field where it fits, else over it; no taller than the larger of the two.
void CategoryMenu::place()
{
    const QRect room = parentWidget()->rect().adjusted(edgeGap, edgeGap, -edgeGap, -edgeGap);
    const QRect field(m_field->mapTo(parentWidget(), QPoint(Theme::haloWidth, Theme::haloWidth)),
                      m_field->size() - QSize(2 * Theme::haloWidth, 2 * Theme::haloWidth));
    const int rows = std::min(m_list->count(), mostRows);
    const int wanted = rows * m_list->sizeHintForRow(0) + 2 * padding;
    const int above = field.top() - gapBelowField - room.top();
    const int below = room.bottom() + 1 - field.bottom() - gapBelowField;
    const bool goesBelow = wanted <= below || below >= above;
    const int height = std::min(wanted, goesBelow ? below : above);
    const int top = goesBelow ? field.bottom() + 1 + gapBelowField : field.top() - gapBelowField - height;
    setGeometry(field.left(), top, field.width(), height);
}

void CategoryMenu::choose(const QListWidgetItem *item)
{
    if (!item)
        return;
    const QString id = item->data(idRole).toString();
    close();
    Q_EMIT chosen(id);
}

void CategoryMenu::close()
{
    if (std::exchange(m_isClosing, true))
        return;
    qApp->removeEventFilter(this);
    const bool hadFocus = isAncestorOf(window()->focusWidget());
    hide();
    if (hadFocus && m_field)
        m_field->setFocus(Qt::PopupFocusReason);
    deleteLater();
}

bool CategoryMenu::eventFilter(QObject *watched, QEvent *event)
{
    const auto *widget = qobject_cast<QWidget *>(watched);
    if (!widget)
        return false;
    const bool isInside = widget == this || isAncestorOf(widget);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        if (isInside)
            return false;
        close();
        return widget == m_field; // a press on the field closes, and does not open it again
    case QEvent::FocusIn:
        if (!isInside && widget->window() == window())
            close();
        return false;
    case QEvent::KeyPress:
        if (widget != m_list)
            return false;
        switch (static_cast<QKeyEvent *>(event)->key()) {
        case Qt::Key_Escape:
            close();
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            choose(m_list->currentItem());
            return true;
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
            close();
            return true;
        default:
            return false;
        }
    default:
        return false;
    }
}

void CategoryMenu::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::shared();
    const int radius = theme.scaled(Theme::fieldRadius);
    QPainter painter(this);
    ThemePainting::fillRounded(painter, rect(), radius, theme.color(Theme::Color::raised));
    ThemePainting::strokeRounded(painter, rect(), radius, theme.color(Theme::Color::line));
}
