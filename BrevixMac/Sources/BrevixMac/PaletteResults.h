// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class AppState;
class ColumnLine;
class EmptyState;
class PickerList;
class PromptPreview;
class QBoxLayout;
class QStackedWidget;
class ResultLine;
class StatusCard;

/// The palette's list of prompts, with what there is to say over and under it, and the preview beside it.
/// Where the two would be too narrow, the preview stands below the list, if that leaves room for both.
class PaletteResults final : public QWidget
{
    Q_OBJECT

public:
    /// Free pixels beside the list.
    static constexpr int margin = 12;

    /// @p appState must outlive this widget.
    explicit PaletteResults(AppState &appState, QWidget *parent = nullptr);

    /// Shows the list, or in its place why it is empty; @p isNarrowed by a search or a category.
    void showListOrEmptyState(bool isNarrowed);

    StatusCard &hintCard() const { return *m_hint; }
    PickerList &list() const { return *m_list; }
    EmptyState &emptyState() const { return *m_empty; }
    ResultLine &resultLine() const { return *m_result; }
    PromptPreview &preview() const { return *m_preview; }

private:
    void fillListColumn();
    void arrange();

    AppState &m_appState;
    StatusCard *m_hint;
    PickerList *m_list;
    EmptyState *m_empty;
    QStackedWidget *m_lists;
    ResultLine *m_result;
    ColumnLine *m_line;
    PromptPreview *m_preview;
    QBoxLayout *m_listColumn;
    QBoxLayout *m_row;
};
