// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "PickerResults.h"

#include <QWidget>

class AppState;
class HintBubble;
class LibraryPage;
class MenuBarPromptEditorView;
class PageFade;
class PickerSearchPage;
class SettingsPage;
class QStackedWidget;
class ShareRequests;
class ShareConfirmationBannerView;
class VariableFillView;

/// The content of the picker panel: one page per route, and over all of them the form that fills a prompt's
/// variables. Holds no library data: it reads AppState and calls its actions. 520 × 640 logical pixels. Main
/// thread only.
class MenuBarPickerView : public QWidget
{
    Q_OBJECT

public:
    /// @p appState must outlive this widget.
    explicit MenuBarPickerView(AppState &appState, QWidget *parent = nullptr);

    PickerPanelRoute route() const { return m_route; }

    /// Shows another screen of the panel. The editor remembers where it was opened from.
    void setRoute(PickerPanelRoute route);

    /// Called each time the panel is shown: reads everything again, keeps a prompt selected, and moves the
    /// focus to the search field when AppState asks for it. Stays on the route it is on.
    void appear();

    QSize sizeHint() const override;

    PickerSearchPage &searchPage() const { return *m_searchPage; }
    LibraryPage &libraryPage() const { return *m_libraryPage; }
    ShareConfirmationBannerView &banner() const { return *m_banner; }
    SettingsPage &settingsPage() const { return *m_settingsPage; }
    VariableFillView &variableFillView() const { return *m_fillView; }
    MenuBarPromptEditorView &promptEditor() const { return *m_editor; }

Q_SIGNALS:
    void routeChanged();
    /// The user asked to close the panel (Escape with nothing to go back to).
    void closeRequested();
    void quitRequested();
    /// The user asked for a window of its own.
    void newSkillRequested();
    /// The same, for what the panel's prompt editor holds; the panel leaves its editor.
    void promptWindowRequested();
    void paletteRequested();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void observeSearchPage();
    void observeLibraryPage();
    void observeEditor();
    void focusPage();
    QWidget *pageOf(PickerPanelRoute route) const;
    void closeEditor();
    void showActiveForm();

    AppState &m_appState;
    ShareRequests *m_sharing;
    QStackedWidget *m_pages;
    PickerSearchPage *m_searchPage;
    LibraryPage *m_libraryPage;
    MenuBarPromptEditorView *m_editor;
    SettingsPage *m_settingsPage;
    VariableFillView *m_fillView;
    HintBubble *m_hint;
    PageFade *m_fade;
    ShareConfirmationBannerView *m_banner;
    PickerPanelRoute m_route = PickerPanelRoute::picker;
    PickerPanelRoute m_editorReturnRoute = PickerPanelRoute::picker;
};
