// SPDX-License-Identifier: GPL-3.0-or-later
#include "SidebarList.h"

#include "OneLine.h"
#include "RowOverlay.h"
#include "Symbols.h"
#include "ThemePainting.h"
#include "ThemedButton.h"
#include "ThinScrollBar.h"

#include <QAbstractItemDelegate>
#include <QPainter>
#include <QScopedValueRollback>

#include <algorithm>

namespace {

constexpr int rowHeight = 32;
constexpr int headingHeight = 38;
constexpr int sideMargin = 11;
constexpr int topMargin = 10;
constexpr int padding = 10;
constexpr int headingPadding = 11;
constexpr int symbolSize = 16;
constexpr int symbolGap = 8;
constexpr int countGap = 6;
constexpr int shareHeight = 28;

constexpr int line = Qt::AlignVCenter | Qt::TextSingleLine;

} // namespace

class SidebarList::Delegate final : public QAbstractItemDelegate
{
public:
    using QAbstractItemDelegate::QAbstractItemDelegate;

    /// Pixels kept free at the right end of the selected row.
    int shareWidth = 0;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const SidebarEntry *entry = entryOf(index);
        const int height = entry && entry->isHeading() ? headingHeight : rowHeight;
        return {option.rect.width(), Theme::shared().scaled(height)};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const SidebarEntry *entry = entryOf(index);
        if (!entry)
            return;
        painter->save();
        painter->setLayoutDirection(Qt::LayoutDirectionAuto);
        if (entry->isHeading())
            paintHeading(*painter, option.rect, *entry);
        else
            paintEntry(*painter, option, *entry);
        painter->restore();
    }

private:
    static const SidebarEntry *entryOf(const QModelIndex &index)
    {
        return static_cast<const SidebarModel *>(index.model())->entry(index.row());
    }

    static void drawText(QPainter &painter, const QRect &area, Theme::Type type, Theme::Color ink,
                         Qt::Alignment alignment, const QString &text)
    {
        const Theme &theme = Theme::shared();
        const QFont font = theme.font(type);
        painter.setFont(font);
        painter.setPen(theme.color(ink));
        painter.drawText(area, static_cast<int>(alignment | Qt::AlignAbsolute) | line,
                         QFontMetrics(font).elidedText(text, Qt::ElideRight, area.width()));
    }

    static void paintHeading(QPainter &painter, const QRect &frame, const SidebarEntry &entry)
    {
        const Theme &theme = Theme::shared();
        drawText(painter, frame.adjusted(theme.scaled(headingPadding), theme.scaled(12), 0, 0),
                 Theme::Type::sectionTitle, Theme::Color::secondary, Qt::AlignLeft, entry.title);
    }

    void paintEntry(QPainter &painter, const QStyleOptionViewItem &option, const SidebarEntry &entry) const
    {
        const Theme &theme = Theme::shared();
        const QRect frame = option.rect;
        const bool isSelected = option.state.testFlag(QStyle::State_Selected);
        const int radius = theme.scaled(Theme::buttonRadius);
        if (isSelected || option.state.testFlag(QStyle::State_MouseOver))
            ThemePainting::fillRounded(
                painter, frame, radius,
                theme.color(isSelected ? Theme::Color::accentSoft : Theme::Color::hover));
        const Theme::Color ink = isSelected ? Theme::Color::accentInk : Theme::Color::text;
        const int symbol = theme.scaled(symbolSize);
        const int left = frame.left() + theme.scaled(padding);
        Symbols::paint(painter, entry.symbol, entry.tint.isValid() ? entry.tint : theme.color(ink),
                       QRectF(left, frame.top(), symbol, frame.height()), symbol);
        const int shareRoom = isSelected && entry.canBeShared ? shareWidth : theme.scaled(padding);
        int right = frame.right() + 1 - shareRoom;
        if (entry.count) {
            const QString count = QString::number(*entry.count);
            const int width = QFontMetrics(theme.font(Theme::Type::count)).horizontalAdvance(count) + 1;
            drawText(painter, QRect(right - width, frame.top(), width, frame.height()), Theme::Type::count,
                     isSelected ? Theme::Color::secondary : Theme::Color::tertiary, Qt::AlignRight, count);
            right -= width + theme.scaled(countGap);
        }
        const int textLeft = left + symbol + theme.scaled(symbolGap);
        drawText(painter, QRect(textLeft, frame.top(), right - textLeft, frame.height()),
                 isSelected ? Theme::Type::sidebarSelected : Theme::Type::sidebar, ink, Qt::AlignLeft,
                 OneLine::of(entry.title));
        if (isSelected && option.state.testFlag(QStyle::State_HasFocus))
            ThemePainting::strokeRounded(painter, frame, radius, theme.color(Theme::Color::accent),
                                         Theme::focusBorder);
    }
};

SidebarList::SidebarList(const QString &accessibleName, QWidget *parent)
    : QListView(parent)
    , m_entries(new SidebarModel(this))
    , m_delegate(new Delegate(this))
    , m_share(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Share Category"), this))
    , m_overlay(new RowOverlay(*this, *m_share))
{
    setAccessibleName(accessibleName);
    setModel(m_entries);
    setItemDelegate(m_delegate);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::TabFocus);
    setMouseTracking(true);
    setTabKeyNavigation(false);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBar(new ThinScrollBar(this));
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setViewportMargins(sideMargin, topMargin, 0, topMargin);
    viewport()->setAutoFillBackground(false);
    m_share->setFaceSymbol(QStringLiteral("square.and.arrow.up"));
    m_share->setFace(ThemedButton::Face::symbolOnly);
    m_share->setDesignHeight(shareHeight - 2 * Theme::haloWidth);
    connect(m_share, &QPushButton::clicked, this, [this] { Q_EMIT shareRequested(selectedID()); });
    connect(&Theme::shared(), &Theme::changed, this, &SidebarList::onThemeChanged);
    onThemeChanged();
}

void SidebarList::onThemeChanged()
{
    m_delegate->shareWidth = m_share->sizeHint().width() + Theme::shared().scaled(4);
    scheduleDelayedItemsLayout();
    viewport()->update();
    placeShareButton();
}

void SidebarList::show(const QList<SidebarEntry> &entries, const QString &selectedID)
{
    const QScopedValueRollback showing(m_isShowing, true);
    m_entries->setEntries(entries);
    const int row = m_entries->rowOf(selectedID);
    if (row != currentIndex().row() || !selectionModel()->isSelected(currentIndex()))
        setCurrentIndex(m_entries->index(row));
    placeShareButton();
}

QString SidebarList::selectedID() const
{
    const SidebarEntry *entry = m_entries->entry(currentIndex().row());
    return entry ? entry->id : QString();
}

void SidebarList::refreshSharing(const std::function<bool(const QString &)> &isSharing)
{
    const bool isUnderWay = isSharing(selectedID());
    m_share->setLabel(isUnderWay ? QStringLiteral("Sharing") : QStringLiteral("Share Category"));
    m_share->setBusy(isUnderWay);
    m_share->setEnabled(!isUnderWay);
    m_share->setToolTip(m_share->text());
}

void SidebarList::placeShareButton()
{
    const SidebarEntry *entry = m_entries->entry(currentIndex().row());
    const QRect row = visualRect(currentIndex());
    if (!entry || !entry->canBeShared || !row.isValid()) {
        m_overlay->place({});
        return;
    }
    const QSize size = m_share->sizeHint();
    m_overlay->place(QRect(row.right() - size.width(), row.center().y() + 1 - size.height() / 2, size.width(),
                           size.height()));
}

void SidebarList::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QListView::currentChanged(current, previous);
    placeShareButton();
    if (!m_isShowing && current.isValid())
        Q_EMIT chosen(selectedID());
}

void SidebarList::resizeEvent(QResizeEvent *event)
{
    QListView::resizeEvent(event);
    placeShareButton();
}

void SidebarList::scrollContentsBy(int dx, int dy)
{
    QListView::scrollContentsBy(dx, dy);
    placeShareButton();
}

void SidebarList::focusInEvent(QFocusEvent *event)
{
    QListView::focusInEvent(event);
    viewport()->update();
}

void SidebarList::focusOutEvent(QFocusEvent *event)
{
    QListView::focusOutEvent(event);
    viewport()->update();
}

QSize SidebarList::sizeHint() const
{
    return {Theme::shared().scaled(190), 0};
}

QSize SidebarList::minimumSizeHint() const
{
    return {0, 2 * Theme::shared().scaled(rowHeight)};
}
