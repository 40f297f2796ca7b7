// SPDX-License-Identifier: GPL-3.0-or-later
#include "PaletteResults.h"

#include "AppState.h"
#include "EmptyState.h"
#include "LayoutWatch.h"
#include "PaletteGrounds.h"
#include "PickerList.h"
#include "PromptPreview.h"
#include "PromptRowView.h"
#include "ResultLine.h"
#include "StatusCard.h"
#include "Theme.h"

#include <QBoxLayout>
#include <QStackedWidget>

namespace {

constexpr int listStretch = 11;
constexpr int previewStretch = 9;
constexpr int narrowestColumns = 480; // below it the preview stands under the list
constexpr int lowestPreview = 130;    // there

} // namespace

PaletteResults::PaletteResults(AppState &appState, QWidget *parent)
    : QWidget(parent)
    , m_appState(appState)
    , m_hint(new StatusCard)
    , m_list(new PickerList(PickerRowActions::Wording::quiet, nullptr, new PromptRowView))
    , m_empty(new EmptyState)
    , m_lists(new QStackedWidget)
    , m_result(new ResultLine(appState))
    , m_line(new ColumnLine)
    , m_preview(new PromptPreview)
    , m_listColumn(new QVBoxLayout)
    , m_row(new QBoxLayout(QBoxLayout::LeftToRight, this))
{
    m_hint->describe(StatusCard::Tint::warning, QStringLiteral("exclamationmark.triangle"), {},
                     QStringLiteral("Select a text field, then insert or copy a prompt."));
    m_list->setAccessibleName(QStringLiteral("Prompts"));
    m_list->setSideMargins(margin, margin + 2);
    m_empty->setButtonsShown(false);
    m_result->setSideMargin(margin);
    m_preview->setMinimumWidth(0);
    m_row->setContentsMargins(0, 0, 0, 0);
    m_row->setSpacing(0);
    fillListColumn();
    m_row->addLayout(m_listColumn, listStretch);
    m_row->addWidget(m_line);
    m_row->addWidget(m_preview, previewStretch);
    connect(&Theme::shared(), &Theme::changed, this, &PaletteResults::arrange);
    new LayoutWatch(this, [this] { arrange(); });
}

void PaletteResults::fillListColumn()
{
    m_lists->addWidget(m_list);
    m_lists->addWidget(m_empty);
    auto *hintRow = new QHBoxLayout;
    hintRow->setContentsMargins(margin, 10, margin, 0);
    hintRow->addWidget(m_hint);
    m_listColumn->setSpacing(0);
    m_listColumn->addLayout(hintRow);
    m_listColumn->addWidget(m_lists, 1);
    m_listColumn->addWidget(m_result);
}

void PaletteResults::showListOrEmptyState(bool isNarrowed)
{
    m_empty->describe(isNarrowed ? QStringLiteral("magnifyingglass") : QStringLiteral("square.grid.2x2"),
                      QStringLiteral("No prompts found"),
                      isNarrowed ? QStringLiteral("Try another search or category.")
                                 : QStringLiteral("Your prompts will appear here once they sync."));
    if (isNarrowed)
        m_empty->clearSync();
    else
        m_empty->setSync(m_appState.libraryStore().syncState());
    const bool isEmpty = m_list->items().rowCount() == 0;
    m_lists->setCurrentWidget(isEmpty ? static_cast<QWidget *>(m_empty) : m_list);
}

void PaletteResults::arrange()
{
    const Theme &theme = Theme::shared();
    const bool areSideBySide = width() >= theme.scaled(narrowestColumns);
    const int listHeight = m_listColumn->hasHeightForWidth() ? m_listColumn->minimumHeightForWidth(width())
                                                             : m_listColumn->minimumSize().height();
    const bool haveRoom = areSideBySide || height() - listHeight >= theme.scaled(lowestPreview);
    m_line->setVisible(haveRoom);
    m_preview->setVisible(haveRoom);
    m_row->setDirection(areSideBySide ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    m_line->setOrientation(areSideBySide ? Qt::Vertical : Qt::Horizontal);
}
