// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerSearchPage.h"

#include "AppState.h"
#include "CompactVariableForm.h"
#include "EmptyState.h"
#include "InPanelMenu.h"
#include "PermissionList.h"
#include "PickerFooter.h"
#include "PickerHeader.h"
#include "PickerList.h"
#include "PickerNotices.h"
#include "PickerRowActions.h"
#include "ResultActions.h"
#include "ResultLine.h"
#include "SignInNotice.h"
#include "StatusCard.h"
#include "TabOrder.h"
#include "TextField.h"
#include "ThemedButton.h"

#include <QScopedValueRollback>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace {

constexpr int halo = Theme::haloWidth;
constexpr int searchHeight = 44;

} // namespace

PickerSearchPage::PickerSearchPage(AppState &appState, ShareRequests &sharing, QWidget *parent)
    : QWidget(parent)
    , m_appState(appState)
    , m_header(new PickerHeader(appState, this))
    , m_notices(new PickerNotices(appState, this))
    , m_search(new TextField(this))
    , m_list(new PickerList(PickerRowActions::Wording::namesTheKind, this))
    , m_empty(new EmptyState(this))
    , m_form(new CompactVariableForm(appState, this))
    , m_stack(new QStackedWidget(this))
    , m_result(new ResultLine(appState, this))
    , m_actions(new ResultActions({appState, sharing, *m_search, *m_list, *m_result}, this))
    , m_footer(new PickerFooter(appState, this))
    , m_plusMenu(new InPanelMenu(this))
{
    m_search->setSymbol(QStringLiteral("magnifyingglass"));
    m_search->setDesignHeight(searchHeight);
    m_search->setPlaceholderText(QStringLiteral("Search prompts or skills..."));
    m_search->setAccessibleName(QStringLiteral("Search prompts or skills"));
    m_stack->addWidget(m_list);
    m_stack->addWidget(m_empty);
    m_stack->addWidget(m_form);
    addPlusMenu();
    layOut();
    setTabOrders();
    observe();
    refresh();
}

void PickerSearchPage::layOut()
{
    const auto inset = [](QWidget *widget, int left, int top, int right) {
        auto *row = new QVBoxLayout;
        row->setContentsMargins(left, top, right, 0);
        row->addWidget(widget);
        return row;
    };
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(inset(m_header, Theme::margin, 17, Theme::margin - halo));
    column->addLayout(inset(m_notices, Theme::margin, 9, 0));
    column->addLayout(inset(m_search, Theme::margin - halo, 12 - halo, Theme::margin - halo));
    column->addWidget(m_stack, 1);
    m_stack->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_result);
    column->addWidget(m_footer);
    for (QWidget *page : {static_cast<QWidget *>(m_list), static_cast<QWidget *>(m_form)})
        page->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
}

void PickerSearchPage::addPlusMenu()
{
    m_plusMenu->setAccessibleName(m_footer->plusButton().accessibleName());
    m_menuNewPrompt = &m_plusMenu->addEntry(QStringLiteral("New Prompt"), QStringLiteral("text.quote"));
    m_menuNewSkill = &m_plusMenu->addEntry(QStringLiteral("New Skill"), QStringLiteral("wand.and.stars"));
    m_menuPalette =
        &m_plusMenu->addEntry(QStringLiteral("Open Palette"), QStringLiteral("rectangle.split.3x1"));
    connect(m_menuPalette, &QPushButton::clicked, this, &PickerSearchPage::paletteRequested);
    connect(&m_footer->plusButton(), &QPushButton::clicked, this, [this] {
        const ThemedButton &plus = m_footer->plusButton();
        m_plusMenu->openAbove(plus.mapTo(this, QPoint(0, 0)));
    });
}

void PickerSearchPage::setTabOrders()
{
    const SignInNotice &signIn = m_notices->signInNotice();
    const PickerRowActions &actions = m_list->actions();
    const QList<QWidget *> form = m_form->tabOrder();
    TabOrder::set(
        QList<QWidget *>{&m_header->signInButton(), &m_header->settingsButton(), &signIn.copyLinkButton(),
                         &signIn.cancelButton(), &m_notices->permissionList().accessibilityButton(),
                         &m_notices->permissionList().postEventButton(), &m_notices->hideTipButton(),
                         m_search, &actions.insertButton(), &actions.copyButton(), &actions.shareButton(),
                         &m_empty->newPromptButton(), &m_empty->newSkillButton()} +
        form +
        QList<QWidget *>{&m_result->recoveryButton(), m_menuNewPrompt, m_menuNewSkill, m_menuPalette,
                         &m_footer->plusButton(), &m_footer->libraryButton(), &m_footer->settingsButton(),
                         &m_footer->signOutButton(), &m_footer->quitButton()});
}

void PickerSearchPage::observeControls()
{
    for (const ThemedButton *button : {&m_header->settingsButton(), &m_footer->settingsButton()})
        connect(button, &QPushButton::clicked, this, &PickerSearchPage::settingsRequested);
    for (const ThemedButton *button : {m_menuNewPrompt, &m_empty->newPromptButton()})
        connect(button, &QPushButton::clicked, this, &PickerSearchPage::newPromptRequested);
    for (const ThemedButton *button : {m_menuNewSkill, &m_empty->newSkillButton()})
        connect(button, &QPushButton::clicked, this, &PickerSearchPage::newSkillRequested);
    connect(&m_footer->libraryButton(), &QPushButton::clicked, this, &PickerSearchPage::libraryRequested);
    connect(m_footer, &PickerFooter::quitRequested, this, &PickerSearchPage::quitRequested);
}

void PickerSearchPage::observe()
{
    observeControls();
    connect(m_search, &QLineEdit::textEdited, &m_appState, &AppState::setQuery);
    connect(m_list, &PickerList::selectedResultChanged, this, &PickerSearchPage::publishSelection);
    connect(m_actions, &ResultActions::circumstancesChanged, m_actions, &ResultActions::describe);

    connect(&m_appState, &AppState::queryChanged, this, [this] {
        // While another screen is shown, the query and the selection are that screen's.
        if (!isVisible())
            return;
        m_result->clearHint();
        adoptQuery();
        refreshList();
    });
    connect(&m_appState, &AppState::libraryChanged, this, [this] {
        if (isVisible())
            refreshList();
    });
    connect(&m_appState, &AppState::selectionChanged, this, &PickerSearchPage::onSelectionChanged);
    connect(&m_appState.preferences(), &PreferenceStore::preferredShortcutChanged, this,
            &PickerSearchPage::showListOrEmptyState);
}

void PickerSearchPage::adoptQuery()
{
    if (m_search->text() != m_appState.query())
        m_search->setText(m_appState.query());
    // Another query is another list: its best match is what Return should take.
    const QScopedValueRollback adopting(m_isAdoptingSelection, true);
    m_appState.setSelectedSkillID(std::nullopt);
    m_appState.setSelectedPromptID(std::nullopt);
}

void PickerSearchPage::refresh()
{
    if (m_search->text() != m_appState.query())
        adoptQuery();
    m_notices->refresh();
    m_header->refresh();
    m_result->refresh();
    refreshList();
}

void PickerSearchPage::refreshList()
{
    {
        // What the model's reset does to the selection is not the user's choice.
        const QScopedValueRollback adopting(m_isAdoptingSelection, true);
        m_list->items().setSections(m_appState.resultSections(), m_appState.categoriesByID());
    }
    adoptSelection();
    showListOrEmptyState();
}

void PickerSearchPage::onSelectionChanged()
{
    if (isVisible())
        adoptSelection();
}

void PickerSearchPage::adoptSelection()
{
    if (m_isAdoptingSelection)
        return;
    const auto &skillID = m_appState.selectedSkillID();
    const auto &promptID = m_appState.selectedPromptID();
    const QString id = skillID    ? QString(u"skill:" + *skillID)
                       : promptID ? QString(u"prompt:" + *promptID)
                                  : QString();
    {
        const QScopedValueRollback adopting(m_isAdoptingSelection, true);
        m_list->selectResult(id);
    }
    publishSelection();
}

void PickerSearchPage::publishSelection()
{
    if (m_isAdoptingSelection)
        return;
    const PickerResult *selected = m_list->selectedResult();
    if (selected) {
        const QScopedValueRollback adopting(m_isAdoptingSelection, true);
        m_appState.setSelectedPromptID(selected->prompt() ? std::optional(selected->prompt()->id)
                                                          : std::nullopt);
        m_appState.setSelectedSkillID(selected->skill() ? std::optional(selected->skill()->id)
                                                        : std::nullopt);
    }
    m_result->clearHint();
    m_actions->describe();
}

void PickerSearchPage::showListOrEmptyState()
{
    if (isFormShown())
        return;
    if (m_list->items().rowCount() > 0) {
        m_stack->setCurrentWidget(m_list);
        return;
    }
    if (m_appState.query().trimmed().isEmpty()) {
        m_empty->describe(
            QStringLiteral("square.grid.2x2"), {},
            u"Your synced library will appear here. When you're ready, click into any text field and press " +
                m_appState.hotkeyLabel() + u".");
        m_empty->setSync(m_appState.libraryStore().syncState());
    } else {
        m_empty->describe(QStringLiteral("magnifyingglass"), QStringLiteral("No prompts or skills found"),
                          QStringLiteral("Try another search, or create a new prompt or skill."));
        m_empty->clearSync();
    }
    m_stack->setCurrentWidget(m_empty);
}

void PickerSearchPage::setFormShown(bool showsForm)
{
    m_search->setEnabled(!showsForm);
    if (showsForm) {
        m_stack->setCurrentWidget(m_form);
        m_form->begin();
        setTabOrders(); // its fields are new
        return;
    }
    if (isFormShown())
        m_stack->setCurrentWidget(m_list);
    showListOrEmptyState();
}

bool PickerSearchPage::isFormShown() const
{
    return m_stack->currentWidget() == m_form;
}

void PickerSearchPage::focusSearch()
{
    m_search->setFocus();
}
