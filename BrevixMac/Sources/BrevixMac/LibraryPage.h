// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PickerResults.h"

#include <QWidget>

class AppState;
class EmptyState;
class PageHeader;
class PickerList;
class QBoxLayout;
class QStackedWidget;
class ResultActions;
class ResultLine;
class ShareRequests;
class SidebarList;
class TextField;
class TextLabel;
class ThemedButton;
class VariableForm;
struct SidebarEntry;

/// The library screen: filters with their counts, a search of its own, the items, and the form that fills a
/// prompt's variables before it is copied. Query, filter and the form's values belong to this screen alone.
/// Main thread only.
class LibraryPage final : public QWidget
{
    Q_OBJECT

public:
    /// Both must outlive this widget.
    LibraryPage(AppState &appState, ShareRequests &sharing, QWidget *parent = nullptr);

    /// Reads everything again. While it is hidden, nothing else does.
    void refresh();

    void focusSearch();

    /// What Escape does here: closes the form. False when there was nothing to close.
    bool goBack();

    const LibraryFilter &filter() const { return m_filter; }
    void setFilter(const LibraryFilter &filter);

    PageHeader &header() const { return *m_header; }
    ThemedButton &newPromptButton() const { return *m_newPrompt; }
    ThemedButton &newSkillButton() const { return *m_newSkill; }
    SidebarList &sidebar() const { return *m_sidebar; }
    TextField &searchField() const { return *m_search; }
    PickerList &list() const { return *m_list; }
    EmptyState &emptyState() const { return *m_empty; }
    VariableForm &form() const { return *m_form; }
    ResultLine &resultLine() const { return *m_result; }
    QString title() const;
    QString caption() const;
    bool isFormShown() const;

Q_SIGNALS:
    void backRequested();
    void newPromptRequested();
    void newSkillRequested();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    QWidget *makeBrowser();
    QWidget *makePane();
    void makeControls();
    void setTabOrders();
    void observe();
    void onThemeChanged();
    void fitSidebar();
    void fitHeadline();
    QList<SidebarEntry> sidebarEntries() const;
    void refreshSidebar();
    void refreshList();
    void refreshHeadline(qsizetype count);
    void refreshActions();
    void shareCategory(const QString &id);
    void beginFill(const PromptItem &prompt);
    void finishFill();
    void closeForm();

    AppState &m_appState;
    ShareRequests &m_sharing;
    LibraryFilter m_filter;
    std::optional<PromptItem> m_fillPrompt;
    VariableValues m_fillValues;

    PageHeader *m_header;
    ThemedButton *m_newPrompt;
    ThemedButton *m_newSkill;
    SidebarList *m_sidebar;
    TextField *m_search;
    TextLabel *m_title;
    TextLabel *m_caption;
    QBoxLayout *m_headline;
    PickerList *m_list;
    EmptyState *m_empty;
    QStackedWidget *m_results;
    ResultLine *m_result;
    VariableForm *m_form;
    QStackedWidget *m_stack;
    ResultActions *m_actions;
};
