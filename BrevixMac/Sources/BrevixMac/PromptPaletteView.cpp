// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptPaletteView.h"

#include "AppState.h"
#include "BrandGlyph.h"
#include "ButtonBar.h"
#include "HintBubble.h"
#include "OneLine.h"
#include "PaletteGrounds.h"
#include "PaletteResults.h"
#include "PickerList.h"
#include "PreviewText.h"
#include "PromptPreview.h"
#include "ResultActions.h"
#include "ResultLine.h"
#include "ShareConfirmationBannerView.h"
#include "ShareRequests.h"
#include "SidebarList.h"
#include "StatusCard.h"
#include "TabOrder.h"
#include "TextField.h"
#include "TextLabel.h"
#include "ThemePainting.h"
#include "ThemedButton.h"
#include "VariableFillView.h"

#include <QHBoxLayout>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QStackedWidget>

#include <algorithm>

namespace {

constexpr int halo = Theme::haloWidth;
constexpr int sideMargin = 18;
constexpr int searchHeight = 40;
constexpr int searchShare = 2;          // of the header, twice what its texts have
constexpr int largestSidebarShare = 38; // percent

const QString allID = QStringLiteral("all");
const QString categoryPrefix = QStringLiteral("category:");

} // namespace

PromptPaletteView::PromptPaletteView(AppState &appState, QWidget *parent)
    : QWidget(parent)
    , m_appState(appState)
    , m_sharing(new ShareRequests(appState, this))
    , m_target(new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::elide))
    , m_search(new TextField)
    , m_sidebar(new SidebarList(QStringLiteral("Categories")))
    , m_results(new PaletteResults(appState))
    , m_form(new VariableFillView(appState))
    , m_stack(new QStackedWidget)
    , m_actions(new ResultActions({appState, *m_sharing, *m_search, list(), resultLine()}, this))
    , m_browse(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Browse Library")))
    , m_share(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("Share")))
    , m_copy(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("Copy")))
    , m_insert(new ThemedButton(ThemedButton::Kind::primary, QStringLiteral("Insert")))
    , m_close(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Close")))
    , m_bubble(new HintBubble(this))
    , m_banner(nullptr)
{
    setAccessibleName(QStringLiteral("Prompt Picker"));
    makeControls();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeHeader());
    column->addWidget(makeBody(), 1);
    m_footer = makeFooter();
    column->addWidget(m_footer);
    m_banner = new ShareConfirmationBannerView(appState, this);
    setTabOrders();
    observe();
    observeState();
    onThemeChanged();
}

void PromptPaletteView::makeControls()
{
    m_search->setSymbol(QStringLiteral("magnifyingglass"));
    m_search->setDesignHeight(searchHeight);
    m_search->setPlaceholderText(QStringLiteral("Search prompts..."));
    m_search->setAccessibleName(QStringLiteral("Search prompts"));
    for (ThemedButton *button : {m_browse, m_share, m_copy, m_insert, m_close})
        button->setDesignHeight(34);
    m_browse->setSymbol(QStringLiteral("square.grid.2x2"));
    m_share->setSymbol(QStringLiteral("square.and.arrow.up"));
    m_copy->setSymbol(QStringLiteral("doc.on.doc"));
    m_close->setFaceSymbol(QStringLiteral("xmark"));
    m_insert->setTrailingSymbol(QStringLiteral("return"));
}

QWidget *PromptPaletteView::makeHeader()
{
    auto *title = new TextLabel(Theme::Type::screenTitle, Theme::Color::text, TextLabel::Overflow::elide);
    title->setText(QStringLiteral("Prompt Picker"));
    title->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed); // the search field gives way first
    auto *texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addStretch();
    texts->addWidget(title);
    texts->addWidget(m_target);
    texts->addStretch();
    auto *header = new HeaderGround;
    auto *row = new QHBoxLayout(header);
    row->setContentsMargins(sideMargin, 11, sideMargin - halo, 12);
    row->setSpacing(10);
    row->addWidget(new BrandGlyph, 0, Qt::AlignVCenter);
    row->addLayout(texts, 1);
    row->addWidget(m_search, searchShare);
    return header;
}

QWidget *PromptPaletteView::makeBody()
{
    auto *ground = new SidebarGround(cornerRadius);
    auto *sidebarColumn = new QVBoxLayout(ground);
    sidebarColumn->setContentsMargins(0, 0, 1, 0);
    sidebarColumn->addWidget(m_sidebar);
    m_stack->addWidget(m_results);
    m_stack->addWidget(m_form);

    auto *body = new QWidget;
    auto *row = new QHBoxLayout(body);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(ground);
    row->addWidget(m_stack, 1);
    return body;
}

QWidget *PromptPaletteView::makeFooter()
{
    auto *footer = new ButtonBar;
    auto *row = new QHBoxLayout(footer);
    row->setContentsMargins(sideMargin - 11, 7, sideMargin - halo, 7);
    row->setSpacing(8 - 2 * halo);
    row->addWidget(m_browse);
    row->addStretch(1);
    row->addWidget(m_close);
    row->addWidget(m_share);
    row->addWidget(m_copy);
    row->addWidget(m_insert);
    footer->setShrinking({m_browse, m_share, m_copy, m_close});
    return footer;
}

void PromptPaletteView::setTabOrders()
{
    const PickerRowActions &actions = list().actions();
    TabOrder::set({&m_banner->dismissButton(), m_search, m_sidebar, &m_sidebar->shareButton(),
                   &actions.insertButton(), &actions.copyButton(), &actions.shareButton(),
                   &resultLine().recoveryButton(), &preview().text(), m_browse, m_close, m_share, m_copy,
                   m_insert});
}

void PromptPaletteView::observe()
{
    connect(m_search, &QLineEdit::textEdited, &m_appState, &AppState::setQuery);
    connect(m_sidebar, &SidebarList::chosen, this, [this](const QString &id) {
        m_appState.setSelectedCategoryID(id == allID ? std::nullopt
                                                     : std::optional(id.mid(categoryPrefix.size())));
    });
    connect(m_sidebar, &SidebarList::shareRequested, this, &PromptPaletteView::shareCategory);
    connect(&list(), &PickerList::selectedResultChanged, this, &PromptPaletteView::publishSelection);

    connect(m_insert, &QPushButton::clicked, m_actions, &ResultActions::insert);
    connect(m_copy, &QPushButton::clicked, m_actions, &ResultActions::copy);
    connect(m_share, &QPushButton::clicked, m_actions, &ResultActions::share);
    connect(m_close, &QPushButton::clicked, this, &PromptPaletteView::closeRequested);
    connect(m_browse, &QPushButton::clicked, this, &PromptPaletteView::browseLibraryRequested);
    connect(&Theme::shared(), &Theme::changed, this, &PromptPaletteView::onThemeChanged);
}

void PromptPaletteView::observeState()
{
    const auto whenVisible = [this](void (PromptPaletteView::*refresh)()) {
        return [this, refresh] {
            if (isVisible())
                (this->*refresh)();
        };
    };
    connect(&m_appState, &AppState::queryChanged, this, whenVisible(&PromptPaletteView::refreshForQuery));
    connect(&m_appState, &AppState::libraryChanged, this, whenVisible(&PromptPaletteView::refresh));
    connect(&m_appState, &AppState::selectionChanged, this,
            whenVisible(&PromptPaletteView::onSelectionChanged));
    connect(&m_appState, &AppState::focusedTargetChanged, this,
            whenVisible(&PromptPaletteView::refreshTarget));
    connect(&m_appState, &AppState::activeVariablePromptChanged, this,
            whenVisible(&PromptPaletteView::showActiveForm));
    connect(m_actions, &ResultActions::circumstancesChanged, this,
            whenVisible(&PromptPaletteView::refreshActions));
}

void PromptPaletteView::appear()
{
    m_appState.ensurePromptSelection();
    m_search->setText(m_appState.query());
    resultLine().refresh();
    refresh();
    refreshTarget();
    showActiveForm();
}

void PromptPaletteView::focusSearch()
{
    m_search->setFocus();
}

void PromptPaletteView::refresh()
{
    refreshSidebar();
    refreshList();
}

void PromptPaletteView::refreshForQuery()
{
    if (m_search->text() != m_appState.query())
        m_search->setText(m_appState.query());
    resultLine().clearHint();
    {
        // Another query is another list: its best match is what Return should take.
        const QScopedValueRollback adopting(m_isAdoptingSelection, true);
        m_appState.setSelectedPromptID(std::nullopt);
    }
    refreshList();
}

void PromptPaletteView::refreshTarget()
{
    const FocusedTargetPtr &target = m_appState.focusedTarget();
    m_target->setText(target
                          ? OneLine::of(target->applicationName.value_or(QStringLiteral("the selected app")))
                          : QStringLiteral("No focused app captured"));
    hintCard().setVisible(!target);
    refreshActions();
}

void PromptPaletteView::refreshSidebar()
{
    const QList<PromptItem> &prompts = m_appState.libraryPrompts();
    QList<SidebarEntry> entries{{.id = allID,
                                 .title = QStringLiteral("All Prompts"),
                                 .symbol = QStringLiteral("text.quote"),
                                 .count = prompts.size()}};
    for (const PromptCategory &category : m_appState.libraryCategories())
        entries.append(
            {.id = ShareRequests::idOf(category),
             .title = category.name,
             .symbol = QStringLiteral("folder"),
             .tint = ThemePainting::categoryColor(category),
             .count = PickerResults::libraryItemCount(LibraryFilter::category(category.id), prompts, {}),
             .canBeShared = true});
    const auto &selected = m_appState.selectedCategoryID();
    // A category that was deleted while it was looked at stays until another one is chosen.
    if (selected && !m_appState.categoriesByID().contains(*selected)) {
        const LibraryFilter gone = LibraryFilter::category(*selected);
        entries.append({.id = categoryPrefix + *selected,
                        .title = PickerResults::libraryFilterTitle(gone, {}),
                        .symbol = QStringLiteral("folder"),
                        .count = PickerResults::libraryItemCount(gone, prompts, {})});
    }
    m_sidebar->show(entries, selected ? QString(categoryPrefix + *selected) : allID);
    m_sidebar->refreshSharing([this](const QString &id) { return m_sharing->isSharing(id); });
}

QList<PickerResultSection> PromptPaletteView::sections() const
{
    const auto section = [](const QString &id, const QString &title, const QList<PromptItem> &prompts) {
        PickerResultSection result{.id = id, .title = title, .subtitle = {}, .results = {}};
        for (const PromptItem &prompt : prompts)
            result.results.append(PickerResult{prompt});
        return result;
    };
    QList<PickerResultSection> sections;
    const bool isSearching = !m_appState.query().trimmed().isEmpty();
    const QList<PromptItem> recent = m_appState.recentPromptItems();
    if (!isSearching && !recent.isEmpty())
        sections.append(section(QStringLiteral("recent"), QStringLiteral("Recent"), recent));
    const QList<PromptItem> visible = m_appState.visiblePrompts();
    if (!visible.isEmpty())
        sections.append(section(QStringLiteral("prompts"),
                                isSearching ? QStringLiteral("Matches") : QStringLiteral("All Prompts"),
                                visible));
    return sections;
}

void PromptPaletteView::refreshList()
{
    {
        // What the model's reset does to the selection is not the user's choice.
        const QScopedValueRollback adopting(m_isAdoptingSelection, true);
        list().items().setSections(sections(), m_appState.categoriesByID());
    }
    adoptSelection();
    m_results->showListOrEmptyState(!m_search->text().isEmpty() || m_appState.selectedCategoryID());
}

void PromptPaletteView::onSelectionChanged()
{
    if (m_isAdoptingSelection)
        return;
    // The category is part of the selection.
    refresh();
}

void PromptPaletteView::adoptSelection()
{
    if (m_isAdoptingSelection)
        return;
    const auto &promptID = m_appState.selectedPromptID();
    {
        const QScopedValueRollback adopting(m_isAdoptingSelection, true);
        list().selectResult(promptID ? QString(u"prompt:" + *promptID) : QString());
    }
    publishSelection();
}

void PromptPaletteView::publishSelection()
{
    if (m_isAdoptingSelection)
        return;
    const PickerResult *selected = list().selectedResult();
    const auto prompt = selected ? std::optional(*selected->prompt()) : std::nullopt;
    {
        const QScopedValueRollback adopting(m_isAdoptingSelection, true);
        m_appState.setSelectedSkillID(std::nullopt);
        m_appState.setSelectedPromptID(prompt ? std::optional(prompt->id) : std::nullopt);
    }
    preview().show(prompt, prompt ? m_appState.categoriesByID().value(prompt->categoryID).name : QString());
    resultLine().clearHint();
    refreshActions();
}

void PromptPaletteView::refreshActions()
{
    const PickerResult *selected = list().selectedResult();
    const PickerTargetStatus status = m_appState.targetStatus();
    const bool isInserting = m_appState.isInserting();
    const bool isSharing = m_actions->isSharing();
    const bool canAct = selected && !m_appState.activeVariablePrompt();
    m_actions->describe();
    m_insert->setBusy(isInserting);
    m_insert->setEnabled(canAct && status.ready && !isInserting);
    m_insert->setToolTip(status.ready ? QString(u"Insert into " + OneLine::of(status.appName))
                                      : status.title);
    m_insert->setAccessibleDescription(m_insert->toolTip());
    m_copy->setEnabled(canAct);
    m_share->setLabel(isSharing ? QStringLiteral("Sharing...") : QStringLiteral("Share"));
    m_share->setBusy(isSharing);
    m_share->setEnabled(canAct && !isSharing);
    m_sidebar->refreshSharing([this](const QString &id) { return m_sharing->isSharing(id); });
}

void PromptPaletteView::shareCategory(const QString &id)
{
    const CategoriesByID categories = m_appState.categoriesByID();
    const auto category = categories.constFind(id.mid(categoryPrefix.size()));
    if (category != categories.constEnd())
        m_sharing->share(*category);
}

void PromptPaletteView::showActiveForm()
{
    const bool isFilling = m_appState.activeVariablePrompt().has_value();
    const bool wasFilling = m_stack->currentWidget() == m_form;
    m_stack->setCurrentIndex(isFilling ? 1 : 0);
    m_footer->setVisible(!isFilling); // the form has its own buttons
    m_search->setEnabled(!isFilling);
    m_sidebar->setEnabled(!isFilling);
    refreshActions();
    if (isFilling)
        m_form->begin();
    else if (wasFilling)
        focusSearch();
}

StatusCard &PromptPaletteView::hintCard() const
{
    return m_results->hintCard();
}

PickerList &PromptPaletteView::list() const
{
    return m_results->list();
}

EmptyState &PromptPaletteView::emptyState() const
{
    return m_results->emptyState();
}

PromptPreview &PromptPaletteView::preview() const
{
    return m_results->preview();
}

ResultLine &PromptPaletteView::resultLine() const
{
    return m_results->resultLine();
}

void PromptPaletteView::onThemeChanged()
{
    fitSidebar();
    update();
}

void PromptPaletteView::fitSidebar()
{
    const int widest = width() * largestSidebarShare / 100;
    m_sidebar->setFixedWidth(std::min(m_sidebar->sizeHint().width(), widest));
}

void PromptPaletteView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fitSidebar();
}

bool PromptPaletteView::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        m_bubble->showFor(static_cast<QHelpEvent *>(event)->pos());
        return true;
    }
    return QWidget::event(event);
}

void PromptPaletteView::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    // Nothing in the picker could show this filter, or take it away.
    m_appState.setSelectedCategoryID(std::nullopt);
}

void PromptPaletteView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Escape)
        QWidget::keyPressEvent(event);
    else if (m_appState.activeVariablePrompt())
        m_appState.cancelVariableAction();
    else
        Q_EMIT closeRequested();
}
