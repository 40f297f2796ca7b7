// SPDX-License-Identifier: GPL-3.0-or-later
#include "MenuBarPickerView.h"

#include "AppState.h"
#include "CompactVariableForm.h"
#include "HintBubble.h"
#include "LibraryPage.h"
#include "MenuBarPromptEditorView.h"
#include "PageFade.h"
#include "PickerSearchPage.h"
#include "PromptTemplateParser.h"
#include "SettingsPage.h"
#include "ShareConfirmationBannerView.h"
#include "ShareRequests.h"
#include "Theme.h"
#include "VariableFillView.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>

MenuBarPickerView::MenuBarPickerView(AppState &appState, QWidget *parent)
    : QWidget(parent)
    , m_appState(appState)
    , m_sharing(new ShareRequests(appState, this))
    , m_pages(new QStackedWidget(this))
    , m_searchPage(new PickerSearchPage(appState, *m_sharing))
    , m_libraryPage(new LibraryPage(appState, *m_sharing))
    , m_editor(new MenuBarPromptEditorView(appState))
    , m_settingsPage(new SettingsPage(appState))
    , m_fillView(new VariableFillView(appState))
    , m_hint(new HintBubble(this))
    , m_fade(new PageFade(this))
    , m_banner(new ShareConfirmationBannerView(appState, this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pages);
    m_pages->addWidget(m_searchPage);
    m_pages->addWidget(m_libraryPage);
    m_pages->addWidget(m_editor);
    m_pages->addWidget(m_settingsPage);
    m_pages->addWidget(m_fillView);
    setAccessibleName(QStringLiteral("Brevix"));
    observeSearchPage();
    observeLibraryPage();
    observeEditor();
    connect(m_settingsPage, &SettingsPage::backRequested, this,
            [this] { setRoute(PickerPanelRoute::picker); });
    connect(&appState, &AppState::activeVariablePromptChanged, this, &MenuBarPickerView::showActiveForm);
}

void MenuBarPickerView::observeSearchPage()
{
    const auto goTo = [this](PickerPanelRoute route) { return [this, route] { setRoute(route); }; };
    connect(m_searchPage, &PickerSearchPage::quitRequested, this, &MenuBarPickerView::quitRequested);
    connect(m_searchPage, &PickerSearchPage::libraryRequested, this, goTo(PickerPanelRoute::library));
    connect(m_searchPage, &PickerSearchPage::settingsRequested, this, goTo(PickerPanelRoute::settings));
    connect(m_searchPage, &PickerSearchPage::newPromptRequested, this, goTo(PickerPanelRoute::newPrompt));
    connect(m_searchPage, &PickerSearchPage::newSkillRequested, this, &MenuBarPickerView::newSkillRequested);
    connect(m_searchPage, &PickerSearchPage::paletteRequested, this, &MenuBarPickerView::paletteRequested);
}

void MenuBarPickerView::observeLibraryPage()
{
    connect(m_libraryPage, &LibraryPage::backRequested, this, [this] { setRoute(PickerPanelRoute::picker); });
    connect(m_libraryPage, &LibraryPage::newPromptRequested, this,
            [this] { setRoute(PickerPanelRoute::newPrompt); });
    connect(m_libraryPage, &LibraryPage::newSkillRequested, this, &MenuBarPickerView::newSkillRequested);
}

void MenuBarPickerView::observeEditor()
{
    connect(m_editor, &MenuBarPromptEditorView::cancelled, this, &MenuBarPickerView::closeEditor);
    connect(m_editor, &MenuBarPromptEditorView::saved, this, &MenuBarPickerView::closeEditor);
    connect(m_editor, &MenuBarPromptEditorView::windowRequested, this, [this] {
        Q_EMIT promptWindowRequested();
        closeEditor();
    });
}

QWidget *MenuBarPickerView::pageOf(PickerPanelRoute route) const
{
    switch (route) {
    case PickerPanelRoute::picker:
        return m_searchPage;
    case PickerPanelRoute::library:
        return m_libraryPage;
    case PickerPanelRoute::newPrompt:
        return m_editor;
    case PickerPanelRoute::settings:
        return m_settingsPage;
    }
    return nullptr;
}

void MenuBarPickerView::setRoute(PickerPanelRoute route)
{
    QWidget *page = pageOf(route);
    if (route == m_route || !page)
        return;
    if (route == PickerPanelRoute::newPrompt)
        m_editorReturnRoute = m_route;
    m_fade->begin();
    m_route = route;
    if (page == m_searchPage)
        m_searchPage->refresh();
    m_pages->setCurrentWidget(page);
    focusPage();
    Q_EMIT routeChanged();
}

void MenuBarPickerView::focusPage()
{
    switch (m_route) {
    case PickerPanelRoute::picker:
        m_searchPage->focusSearch();
        break;
    case PickerPanelRoute::library:
        m_libraryPage->focusSearch();
        break;
    case PickerPanelRoute::settings:
        m_settingsPage->focusFirst();
        break;
    case PickerPanelRoute::newPrompt:
        break; // puts the focus itself
    }
}

void MenuBarPickerView::closeEditor()
{
    // A save may end when its user is elsewhere already.
    if (m_route == PickerPanelRoute::newPrompt)
        setRoute(m_editorReturnRoute);
}

QSize MenuBarPickerView::sizeHint() const
{
    return {Theme::panelWidth, Theme::panelHeight};
}

void MenuBarPickerView::appear()
{
    m_appState.ensurePromptSelection();
    m_searchPage->refresh();
    if (!m_appState.pickerAutoFocusSearch())
        return;
    // After the panel has become the active window.
    QTimer::singleShot(0, this, [this] {
        if (!m_appState.activeVariablePrompt())
            focusPage();
    });
}

void MenuBarPickerView::showActiveForm()
{
    const auto &prompt = m_appState.activeVariablePrompt();
    const bool wasShown = m_pages->currentWidget() == m_fillView || m_searchPage->isFormShown();
    // The short form stands in the place of the quick picker's list; other screens have no such place.
    const bool isShort =
        m_route == PickerPanelRoute::picker && prompt &&
        PromptTemplateParser::variables(prompt->text).size() <= CompactVariableForm::mostVariables;
    m_searchPage->setFormShown(isShort);
    if (prompt && !isShort) {
        m_pages->setCurrentWidget(m_fillView);
        m_fillView->begin();
        return;
    }
    m_pages->setCurrentWidget(pageOf(m_route));
    if (!prompt && wasShown)
        focusPage();
}

bool MenuBarPickerView::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        m_hint->showFor(static_cast<QHelpEvent *>(event)->pos());
        return true;
    }
    return QWidget::event(event);
}

void MenuBarPickerView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Escape) {
        QWidget::keyPressEvent(event);
        return;
    }
    if (m_appState.activeVariablePrompt())
        m_appState.cancelVariableAction();
    else if (m_route == PickerPanelRoute::picker)
        Q_EMIT closeRequested();
    else if (m_route != PickerPanelRoute::library || !m_libraryPage->goBack())
        setRoute(PickerPanelRoute::picker);
}
