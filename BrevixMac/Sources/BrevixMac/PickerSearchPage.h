// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class AppState;
class CompactVariableForm;
class EmptyState;
class InPanelMenu;
class PickerFooter;
class PickerHeader;
class PickerList;
class PickerNotices;
class QStackedWidget;
class ResultActions;
class ResultLine;
class ShareRequests;
class TextField;
class ThemedButton;

/// The quick search screen: header, notices, search field, and under it the list, an empty state or the short
/// variable form. Keys typed into the search field also move the selection and act on it. Main thread only.
class PickerSearchPage final : public QWidget
{
    Q_OBJECT

public:
    /// Both must outlive this widget.
    PickerSearchPage(AppState &appState, ShareRequests &sharing, QWidget *parent = nullptr);

    /// Reads everything again and keeps something selected.
    void refresh();

    /// Puts the list back, or opens the short form when @p showsForm.
    void setFormShown(bool showsForm);
    bool isFormShown() const;

    void focusSearch();

    TextField &searchField() const { return *m_search; }
    PickerList &list() const { return *m_list; }
    PickerHeader &header() const { return *m_header; }
    PickerNotices &notices() const { return *m_notices; }
    PickerFooter &footer() const { return *m_footer; }
    EmptyState &emptyState() const { return *m_empty; }
    CompactVariableForm &form() const { return *m_form; }
    ResultLine &resultLine() const { return *m_result; }
    InPanelMenu &plusMenu() const { return *m_plusMenu; }

Q_SIGNALS:
    void quitRequested();
    void libraryRequested();
    void settingsRequested();
    void newPromptRequested();
    void newSkillRequested();
    void paletteRequested();

private:
    void layOut();
    void observe();
    void observeControls();
    void addPlusMenu();
    void setTabOrders();
    void refreshList();
    void showListOrEmptyState();
    void adoptQuery();
    void onSelectionChanged();
    void adoptSelection();
    void publishSelection();

    AppState &m_appState;
    PickerHeader *m_header;
    PickerNotices *m_notices;
    TextField *m_search;
    PickerList *m_list;
    EmptyState *m_empty;
    CompactVariableForm *m_form;
    QStackedWidget *m_stack;
    ResultLine *m_result;
    ResultActions *m_actions;
    PickerFooter *m_footer;
    InPanelMenu *m_plusMenu;
    ThemedButton *m_menuNewPrompt = nullptr;
    ThemedButton *m_menuNewSkill = nullptr;
    ThemedButton *m_menuPalette = nullptr;
    bool m_isAdoptingSelection = false;
};
