// SPDX-License-Identifier: GPL-3.0-or-later
#include "LibraryPage.h"

#include "AppState.h"
#include "EmptyState.h"
#include "OneLine.h"
#include "PageHeader.h"
#include "PickerList.h"
#include "PromptTemplateParser.h"
#include "ResultActions.h"
#include "ResultLine.h"
#include "ShareRequests.h"
#include "SidebarList.h"
#include "TabOrder.h"
#include "TextField.h"
#include "TextLabel.h"
#include "ThemePainting.h"
#include "ThemedButton.h"
#include "VariableForm.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QStackedWidget>

namespace {

constexpr int halo = Theme::haloWidth;
constexpr int paneMargin = 14;
constexpr int searchHeight = 38;
constexpr int largestSidebarShare = 46; // percent

const QString allID = QStringLiteral("all");
const QString promptsID = QStringLiteral("prompts");
const QString skillsID = QStringLiteral("skills");
const QString categoryPrefix = QStringLiteral("category:");

QString idOf(const LibraryFilter &filter)
{
    switch (filter.kind) {
    case LibraryFilter::Kind::all:
        return allID;
    case LibraryFilter::Kind::prompts:
        return promptsID;
    case LibraryFilter::Kind::skills:
        return skillsID;
    case LibraryFilter::Kind::category:
        break;
    }
    return categoryPrefix + filter.categoryID;
}

LibraryFilter filterOf(const QString &id)
{
    if (id == promptsID)
        return LibraryFilter::prompts();
    if (id == skillsID)
        return LibraryFilter::skills();
    if (id.startsWith(categoryPrefix))
        return LibraryFilter::category(id.mid(categoryPrefix.size()));
    return LibraryFilter::all();
}

/// The longest text that fits into the empty field.
QString placeholderFor(const TextField &field)
{
    const QString whole = QStringLiteral("Search prompts or skills...");
    const QMargins margins = field.textMargins();
    const int room = field.width() - margins.left() - margins.right() - 2 * halo;
    return field.fontMetrics().horizontalAdvance(whole) <= room ? whole : QStringLiteral("Search...");
}

} // namespace

LibraryPage::LibraryPage(AppState &appState, ShareRequests &sharing, QWidget *parent)
    : QWidget(parent)
    , m_appState(appState)
    , m_sharing(sharing)
    , m_header(new PageHeader(QStringLiteral("Library")))
    , m_newPrompt(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("New Prompt")))
    , m_newSkill(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("New Skill")))
    , m_sidebar(new SidebarList(QStringLiteral("Filters")))
    , m_search(new TextField)
    , m_title(new TextLabel(Theme::Type::sectionTitle, Theme::Color::secondary, TextLabel::Overflow::elide))
    , m_caption(new TextLabel(Theme::Type::count, Theme::Color::tertiary, TextLabel::Overflow::elide))
    , m_headline(new QBoxLayout(QBoxLayout::LeftToRight))
    , m_list(new PickerList(PickerRowActions::Wording::plain))
    , m_empty(new EmptyState)
    , m_results(new QStackedWidget)
    , m_result(new ResultLine(appState))
    , m_form(new VariableForm({.title = QStringLiteral("Fill & Copy"),
                               .cancel = QStringLiteral("Cancel"),
                               .confirm = QStringLiteral("Copy"),
                               .placeholder = VariableFields::Placeholder::value}))
    , m_stack(new QStackedWidget(this))
    , m_actions(new ResultActions({appState, sharing, *m_search, *m_list, *m_result}, this))
{
    makeControls();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_stack);
    m_stack->addWidget(makeBrowser());
    m_stack->addWidget(m_form);
    setTabOrders();
    observe();
    onThemeChanged();
}

void LibraryPage::makeControls()
{
    m_header->setUnderlined(true);
    m_header->addButton(m_newPrompt);
    m_header->addButton(m_newSkill);
    m_search->setSymbol(QStringLiteral("magnifyingglass"));
    m_search->setDesignHeight(searchHeight);
    m_list->setAccessibleName(QStringLiteral("Library items"));
    m_list->setSideMargins(paneMargin, paneMargin);
    m_list->setUniformItemSizes(true); // no headings here
    m_list->items().setSkillChip(QStringLiteral("Skill"));
    m_empty->setButtonsShown(false);
    m_result->setSideMargin(paneMargin);
    m_title->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QWidget *LibraryPage::makeBrowser()
{
    auto *browser = new QWidget;
    auto *body = new QHBoxLayout;
    body->setSpacing(0);
    body->addWidget(m_sidebar);
    body->addWidget(makePane(), 1);
    auto *column = new QVBoxLayout(browser);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_header);
    column->addLayout(body, 1);
    return browser;
}

QWidget *LibraryPage::makePane()
{
    auto *searchRow = new QHBoxLayout;
    searchRow->setContentsMargins(paneMargin - halo, 10 - halo, paneMargin - halo, 0);
    searchRow->addWidget(m_search);
    m_headline->setContentsMargins(paneMargin + 2, 9 - halo, paneMargin + 2, 6);
    m_headline->setSpacing(0);
    m_headline->addWidget(m_title, 1);
    m_headline->addWidget(m_caption);
    m_results->addWidget(m_list);
    m_results->addWidget(m_empty);

    auto *pane = new QWidget;
    auto *column = new QVBoxLayout(pane);
    column->setContentsMargins(0, 0, 0, 4);
    column->setSpacing(0);
    column->addLayout(searchRow);
    column->addLayout(m_headline);
    column->addWidget(m_results, 1);
    column->addWidget(m_result);
    return pane;
}

void LibraryPage::setTabOrders()
{
    const PickerRowActions &actions = m_list->actions();
    TabOrder::set({&m_header->backButton(), m_newPrompt, m_newSkill, m_sidebar, &m_sidebar->shareButton(),
                   m_search, &actions.insertButton(), &actions.copyButton(), &actions.shareButton(),
                   &m_result->recoveryButton()});
}

void LibraryPage::observe()
{
    connect(m_header, &PageHeader::backRequested, this, &LibraryPage::backRequested);
    connect(m_newPrompt, &QPushButton::clicked, this, &LibraryPage::newPromptRequested);
    connect(m_newSkill, &QPushButton::clicked, this, &LibraryPage::newSkillRequested);
    connect(m_sidebar, &SidebarList::chosen, this, [this](const QString &id) { setFilter(filterOf(id)); });
    connect(m_sidebar, &SidebarList::shareRequested, this, &LibraryPage::shareCategory);
    connect(m_search, &QLineEdit::textChanged, this, [this] {
        m_result->clearHint();
        refreshList();
    });
    connect(m_list, &PickerList::selectedResultChanged, this, [this] {
        m_result->clearHint();
        refreshActions();
    });

    m_actions->setFillBeforeCopy([this](const PromptItem &prompt) { beginFill(prompt); });

    connect(m_form, &VariableForm::valueEdited, this, [this](const QString &name, const QString &value) {
        m_fillValues.insert(name, value);
        m_form->setValues(m_fillValues);
    });
    connect(m_form, &VariableForm::confirmed, this, &LibraryPage::finishFill);
    connect(m_form, &VariableForm::cancelled, this, &LibraryPage::closeForm);

    connect(&m_appState, &AppState::libraryChanged, this, [this] {
        if (isVisible())
            refresh();
    });
    connect(m_actions, &ResultActions::circumstancesChanged, this, [this] {
        if (isVisible())
            refreshActions();
    });
    connect(&Theme::shared(), &Theme::changed, this, &LibraryPage::onThemeChanged);
}

void LibraryPage::refresh()
{
    refreshSidebar();
    refreshList();
}

void LibraryPage::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    refresh();
}

void LibraryPage::focusSearch()
{
    if (!isFormShown())
        m_search->setFocus();
}

bool LibraryPage::goBack()
{
    if (!isFormShown())
        return false;
    closeForm();
    return true;
}

void LibraryPage::setFilter(const LibraryFilter &filter)
{
    if (filter == m_filter)
        return;
    m_filter = filter;
    m_result->clearHint();
    refresh();
}

// Sidebar

QList<SidebarEntry> LibraryPage::sidebarEntries() const
{
    const QList<PromptItem> &prompts = m_appState.libraryPrompts();
    const auto entry = [&](const LibraryFilter &filter, const QString &symbol) {
        return SidebarEntry{.id = idOf(filter),
                            .title = PickerResults::libraryFilterTitle(filter, {}),
                            .symbol = symbol,
                            .count =
                                PickerResults::libraryItemCount(filter, prompts, m_appState.librarySkills())};
    };
    QList<SidebarEntry> entries{entry(LibraryFilter::all(), QStringLiteral("square.grid.2x2")),
                                entry(LibraryFilter::prompts(), QStringLiteral("text.quote")),
                                entry(LibraryFilter::skills(), QStringLiteral("wand.and.stars"))};
    QList<SidebarEntry> categories;
    for (const PromptCategory &category : m_appState.libraryCategories()) {
        SidebarEntry line = entry(LibraryFilter::category(category.id), QStringLiteral("folder"));
        line.title = category.name;
        line.tint = ThemePainting::categoryColor(category);
        line.canBeShared = true;
        categories.append(line);
    }
    // A category that was deleted while it was looked at stays until another filter is chosen.
    const bool isKnown = m_filter.kind != LibraryFilter::Kind::category ||
                         m_appState.categoriesByID().contains(m_filter.categoryID);
    if (!isKnown)
        categories.append(entry(m_filter, QStringLiteral("folder")));
    if (!categories.isEmpty())
        entries.append(SidebarEntry{.id = {}, .title = QStringLiteral("Categories")});
    return entries + categories;
}

void LibraryPage::refreshSidebar()
{
    m_sidebar->show(sidebarEntries(), idOf(m_filter));
    m_sidebar->refreshSharing([this](const QString &id) { return m_sharing.isSharing(id); });
}

// Results

void LibraryPage::refreshList()
{
    const PickerResult *selected = m_list->selectedResult();
    const QString selectedID = selected ? selected->id() : QString();
    const QList<PickerResult> results = m_appState.libraryResults(m_search->text(), m_filter);
    const qsizetype count = results.size();
    QList<PickerResultSection> sections;
    if (count > 0)
        sections.append({.id = QStringLiteral("library"), .title = {}, .subtitle = {}, .results = results});
    m_list->items().setSections(sections, m_appState.categoriesByID());
    m_list->selectResult(selectedID);
    refreshHeadline(count);
    refreshActions();
}

void LibraryPage::refreshHeadline(qsizetype count)
{
    const bool isNarrowed = !m_search->text().isEmpty() || m_filter != LibraryFilter::all();
    const QString title =
        OneLine::of(PickerResults::libraryFilterTitle(m_filter, m_appState.categoriesByID()));
    m_title->setText(title);
    m_search->setAccessibleName(u"Search " + title);
    m_caption->setText((isNarrowed ? u"Filtered" : u"Full library") + u" \u00b7 "_qs +
                       SidebarModel::counted(count));
    fitHeadline();
    m_empty->describe(isNarrowed ? QStringLiteral("magnifyingglass") : QStringLiteral("square.grid.2x2"),
                      QStringLiteral("No library items found"),
                      isNarrowed
                          ? QStringLiteral("Try another search or filter.")
                          : QStringLiteral("Your prompts and skills will appear here once they sync."));
    if (isNarrowed)
        m_empty->clearSync();
    else
        m_empty->setSync(m_appState.libraryStore().syncState());
    m_results->setCurrentWidget(count > 0 ? static_cast<QWidget *>(m_list) : m_empty);
}

void LibraryPage::fitHeadline()
{
    const QMargins margins = m_headline->contentsMargins();
    const int room = m_search->width() - margins.left() - margins.right();
    const int needed = m_title->sizeHint().width() + m_caption->sizeHint().width() + 12;
    m_headline->setDirection(needed <= room ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
    m_search->setPlaceholderText(placeholderFor(*m_search));
}

void LibraryPage::refreshActions()
{
    m_actions->describe();
    m_sidebar->refreshSharing([this](const QString &id) { return m_sharing.isSharing(id); });
}

void LibraryPage::shareCategory(const QString &id)
{
    const CategoriesByID categories = m_appState.categoriesByID();
    const auto category = categories.constFind(filterOf(id).categoryID);
    if (category != categories.constEnd())
        m_sharing.share(*category);
}

// Fill & Copy

bool LibraryPage::isFormShown() const
{
    return m_stack->currentWidget() == m_form;
}

void LibraryPage::beginFill(const PromptItem &prompt)
{
    m_fillPrompt = prompt;
    m_fillValues.clear();
    for (const VariableToken &variable : PromptTemplateParser::variables(prompt.text))
        m_fillValues.insert(variable.name, QString());
    m_stack->setCurrentWidget(m_form);
    m_form->begin(prompt, m_fillValues);
}

void LibraryPage::finishFill()
{
    if (!m_fillPrompt)
        return;
    const RenderedPrompt rendered = PromptTemplateParser::render(*m_fillPrompt, m_fillValues);
    closeForm();
    m_appState.performCopy(rendered);
}

void LibraryPage::closeForm()
{
    m_fillPrompt.reset();
    m_fillValues.clear();
    m_stack->setCurrentIndex(0);
    focusSearch();
}

// Look

QString LibraryPage::title() const
{
    return m_title->text();
}

QString LibraryPage::caption() const
{
    return m_caption->text();
}

void LibraryPage::onThemeChanged()
{
    fitSidebar();
    fitHeadline();
    update();
}

void LibraryPage::fitSidebar()
{
    const int widest = width() * largestSidebarShare / 100;
    m_sidebar->setFixedWidth(std::min(m_sidebar->sizeHint().width(), widest));
}

void LibraryPage::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fitSidebar();
    fitHeadline();
}

void LibraryPage::paintEvent(QPaintEvent *)
{
    if (isFormShown())
        return;
    // The panel's lower left corner is round, and nothing of it may be painted over.
    const Theme &theme = Theme::shared();
    const QRect sidebar(m_sidebar->mapTo(this, QPoint()), m_sidebar->size());
    QPainterPath panel;
    panel.addRoundedRect(rect(), Theme::panelRadius, Theme::panelRadius);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipRect(sidebar);
    painter.fillPath(panel, theme.color(Theme::Color::sidebar));
    painter.fillRect(QRect(sidebar.right(), sidebar.top(), 1, sidebar.height()),
                     theme.color(Theme::Color::line));
}
