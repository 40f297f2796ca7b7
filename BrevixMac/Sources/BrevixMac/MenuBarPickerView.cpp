// SPDX-License-Identifier: GPL-3.0-or-later
#include "MenuBarPickerView.h"

#include "AppState.h"
#include "CompactVariableForm.h"
#include "HintBubble.h"
#include "PickerSearchPage.h"
#include "PromptTemplateParser.h"
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
    , m_pages(new QStackedWidget(this))
    , m_searchPage(new PickerSearchPage(appState))
    , m_fillView(new VariableFillView(appState))
    , m_hint(new HintBubble(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pages);
    m_pages->addWidget(m_searchPage);
    m_pages->addWidget(m_fillView);
    setAccessibleName(QStringLiteral("Brevix"));
    observeSearchPage();
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

QWidget *MenuBarPickerView::pageOf(PickerPanelRoute route) const
{
    switch (route) {
    case PickerPanelRoute::picker:
        return m_searchPage;
    case PickerPanelRoute::library:
    case PickerPanelRoute::settings:
    case PickerPanelRoute::newPrompt:
        return nullptr; // their pages arrive one by one; until then nothing leads here
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
    m_route = route;
    m_pages->setCurrentWidget(page);
    Q_EMIT routeChanged();
}

void MenuBarPickerView::closeEditor()
{
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
            m_searchPage->focusSearch();
    });
}

void MenuBarPickerView::showActiveForm()
{
    const auto &prompt = m_appState.activeVariablePrompt();
    const qsizetype count = prompt ? PromptTemplateParser::variables(prompt->text).size() : 0;
    const bool isFull = count > CompactVariableForm::mostVariables;
    const bool wasShown = m_pages->currentWidget() == m_fillView || m_searchPage->isFormShown();
    m_searchPage->setFormShown(prompt && !isFull);
    m_pages->setCurrentWidget(isFull ? static_cast<QWidget *>(m_fillView) : m_searchPage);
    if (isFull)
        m_fillView->begin();
    else if (!prompt && wasShown)
        m_searchPage->focusSearch();
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
    else
        Q_EMIT closeRequested();
}
