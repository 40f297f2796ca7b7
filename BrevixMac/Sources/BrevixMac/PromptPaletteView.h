// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class AppState;
class EmptyState;
class HintBubble;
class PaletteResults;
class PickerList;
class PromptPreview;
class QStackedWidget;
class ResultActions;
class ResultLine;
class ShareConfirmationBannerView;
class ShareRequests;
class SidebarList;
class StatusCard;
class TextField;
class TextLabel;
class ThemedButton;
class VariableFillView;
struct PickerResultSection;

/// The palette: categories, prompts and a preview beside each other, over the same state as the picker. Lists
/// prompts only. Keeps no data of its own. Main thread only.
class PromptPaletteView final : public QWidget
{
    Q_OBJECT

public:
    /// Of the window around it.
    static constexpr int cornerRadius = 22;

    /// @p appState must outlive this widget.
    explicit PromptPaletteView(AppState &appState, QWidget *parent = nullptr);

    /// Called each time the palette is shown: reads everything again and keeps a prompt selected. While it is
    /// hidden, nothing is read.
    void appear();

    void focusSearch();

    TextLabel &targetLabel() const { return *m_target; }
    StatusCard &hintCard() const;
    TextField &searchField() const { return *m_search; }
    SidebarList &sidebar() const { return *m_sidebar; }
    PickerList &list() const;
    EmptyState &emptyState() const;
    PromptPreview &preview() const;
    ResultLine &resultLine() const;
    VariableFillView &form() const { return *m_form; }
    ShareConfirmationBannerView &banner() const { return *m_banner; }
    ThemedButton &browseButton() const { return *m_browse; }
    ThemedButton &shareButton() const { return *m_share; }
    ThemedButton &copyButton() const { return *m_copy; }
    ThemedButton &insertButton() const { return *m_insert; }
    ThemedButton &closeButton() const { return *m_close; }

Q_SIGNALS:
    void closeRequested();
    void browseLibraryRequested();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void makeControls();
    QWidget *makeHeader();
    QWidget *makeBody();
    QWidget *makeFooter();
    void setTabOrders();
    void observe();
    void observeState();
    void onThemeChanged();
    void fitSidebar();
    void refresh();
    void refreshForQuery();
    void onSelectionChanged();
    void refreshTarget();
    void refreshSidebar();
    void refreshList();
    void refreshActions();
    QList<PickerResultSection> sections() const;
    void adoptSelection();
    void publishSelection();
    void showActiveForm();
    void shareCategory(const QString &id);

    AppState &m_appState;
    ShareRequests *m_sharing;
    TextLabel *m_target;
    TextField *m_search;
    SidebarList *m_sidebar;
    PaletteResults *m_results;
    VariableFillView *m_form;
    QStackedWidget *m_stack;
    ResultActions *m_actions;
    ThemedButton *m_browse;
    ThemedButton *m_share;
    ThemedButton *m_copy;
    ThemedButton *m_insert;
    ThemedButton *m_close;
    QWidget *m_footer = nullptr;
    HintBubble *m_bubble;
    ShareConfirmationBannerView *m_banner;
    bool m_isAdoptingSelection = false;
};
