// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptEditorForm.h"

#include "CategoryField.h"
#include "ColorSwatches.h"
#include "ContentScrollArea.h"
#include "FormParts.h"
#include "HeadingRow.h"
#include "NewCategoryForm.h"
#include "PromptBodyTextView.h"
#include "PromptEditorModel.h"
#include "TextField.h"
#include "TextLabel.h"
#include "ThemedButton.h"
#include "VariableChips.h"

#include <QAbstractButton>
#include <QHBoxLayout>

namespace {

constexpr int halo = Theme::haloWidth;
constexpr int headingGap = 2;
constexpr int fieldGap = 7;
constexpr int columnGap = 22;
constexpr int leastFormHeight = 70;
constexpr int narrowestColumns = 600; // below it the columns stand one over the other
constexpr int buttonHeight = 38;

} // namespace

PromptEditorForm::PromptEditorForm(PromptEditorModel &model, const PromptEditorTexts &texts, Columns columns,
                                   int margin, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_texts(texts)
    , m_title(new TextField(this))
    , m_category(new CategoryField(this))
    , m_newCategoryToggle(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("New Category"), this))
    , m_newCategory(new NewCategoryForm(model, this))
    , m_body(new PromptBodyTextView(this))
    , m_optimize(new ThemedButton(ThemedButton::Kind::plain, texts.optimize, this))
    , m_undoOptimize(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Undo Optimize"), this))
    , m_variable(new TextField(this))
    , m_insert(new ThemedButton(ThemedButton::Kind::quiet, texts.insertVariable, this))
    , m_chips(new VariableChips(this))
    , m_preview(new EditorTextView(this))
{
    m_title->setPlaceholderText(QStringLiteral("e.g. Cold outreach follow-up"));
    m_title->setAccessibleName(QStringLiteral("Title"));
    m_newCategoryToggle->setDesignHeight(buttonHeight);
    m_optimize->setSymbol(QStringLiteral("wand.and.stars"));
    m_optimize->setInk(Theme::Color::accent);
    m_undoOptimize->setSymbol(QStringLiteral("arrow.uturn.backward"));
    m_variable->setPlaceholderText(QStringLiteral("Variable name"));
    m_variable->setAccessibleName(QStringLiteral("Variable name"));
    m_insert->setDesignHeight(buttonHeight);
    m_preview->setPreview(true);
    m_preview->setMarksVariables(true);
    m_preview->setAccessibleName(QStringLiteral("Preview"));
    m_preview->setPlaceholderText(QStringLiteral("Your prompt preview will appear here."));
    if (columns == Columns::one)
        layOutOneColumn(margin);
    else
        layOutTwoColumns(margin);
    observeModel();
    showContent();
}

// Layout

void PromptEditorForm::addWritingFields(QVBoxLayout &column)
{
    const auto addHeading = [&](const QString &text) {
        column.addWidget(FormParts::heading(text, this));
        column.addSpacing(headingGap);
    };
    addHeading(QStringLiteral("Title"));
    column.addWidget(m_title);
    column.addSpacing(fieldGap);
    addHeading(QStringLiteral("Category"));
    auto *categoryRow = new QHBoxLayout;
    categoryRow->setSpacing(8 - 2 * halo);
    categoryRow->addWidget(m_category, 1);
    categoryRow->addWidget(m_newCategoryToggle);
    column.addLayout(categoryRow);
    column.addWidget(m_newCategory);
    column.addSpacing(fieldGap - 4);
    column.addWidget(new HeadingRow(QStringLiteral("Prompt Text"), {m_undoOptimize, m_optimize}, this));
    column.addWidget(FormParts::growingBox(m_body, this), 3);
}

void PromptEditorForm::addVariables(QVBoxLayout &column)
{
    auto *hint =
        new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::wrap, this);
    hint->setText(m_texts.variablesHint);
    hint->setContentsMargins(halo, 0, halo, 0);
    if (!m_texts.variablesHeading.isEmpty()) {
        column.addWidget(FormParts::heading(m_texts.variablesHeading, this));
        column.addSpacing(headingGap);
    }
    column.addWidget(hint);
    column.addSpacing(headingGap);
    auto *row = new QHBoxLayout;
    row->setSpacing(8 - 2 * halo);
    row->addWidget(m_variable, 1);
    row->addWidget(m_insert);
    column.addLayout(row);
    auto *chipsMargin = new QHBoxLayout;
    chipsMargin->setContentsMargins(halo, 3, halo, 0);
    chipsMargin->addWidget(m_chips);
    column.addLayout(chipsMargin);
}

void PromptEditorForm::addPreview(QVBoxLayout &column, int stretch)
{
    column.addWidget(FormParts::heading(QStringLiteral("Preview"), this));
    column.addSpacing(headingGap);
    column.addWidget(FormParts::growingBox(m_preview, this), stretch);
}

void PromptEditorForm::layOutOneColumn(int margin)
{
    m_body->setDesignHeights(100, 80);
    m_preview->setDesignHeights(57, 57);
    auto *content = new QWidget(this);
    auto *column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, 6);
    column->setSpacing(0);
    addWritingFields(*column);
    column->addSpacing(fieldGap);
    addVariables(*column);
    column->addSpacing(fieldGap);
    addPreview(*column, 1);
    auto *scroll = new ContentScrollArea(content, leastFormHeight, margin - halo, this);
    scroll->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin - halo, 12, 0, 0);
    layout->addWidget(scroll);
}

void PromptEditorForm::layOutTwoColumns(int margin)
{
    m_body->setDesignHeights(150, 100);
    m_preview->setDesignHeights(110, 80);
    auto *content = new QWidget(this);
    auto *writing = new QVBoxLayout;
    writing->setSpacing(0);
    addWritingFields(*writing);
    auto *inspector = new QVBoxLayout;
    inspector->setSpacing(0);
    addVariables(*inspector);
    inspector->addSpacing(fieldGap + 4);
    addPreview(*inspector, 1);
    m_columns = new QBoxLayout(QBoxLayout::LeftToRight, content);
    m_columns->setContentsMargins(0, 0, 0, 6);
    m_columns->setSpacing(columnGap - 2 * halo);
    m_columns->addLayout(writing, 3);
    m_columns->addLayout(inspector, 2);
    auto *scroll = new ContentScrollArea(content, leastFormHeight, margin - halo, this);
    scroll->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin - halo, 14, 0, 0);
    layout->addWidget(scroll);
}

void PromptEditorForm::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_columns)
        FormParts::turnColumns(*m_columns, width() >= Theme::shared().scaled(narrowestColumns));
}

QList<QWidget *> PromptEditorForm::tabOrder() const
{
    QList<QWidget *> order{m_title, m_category, m_newCategoryToggle, &m_newCategory->nameField()};
    for (QAbstractButton *swatch : m_newCategory->swatches().swatches())
        order.append(swatch);
    order.append({&m_newCategory->createButton(), m_undoOptimize, m_optimize, m_body, m_variable, m_insert,
                  m_preview});
    return order;
}

void PromptEditorForm::focusFirst()
{
    m_title->setFocus();
}

// Model

void PromptEditorForm::observeModel()
{
    m_model.pullText = [this] { m_body->report(); };
    connect(m_title, &QLineEdit::textEdited, &m_model, &PromptEditorModel::setTitle);
    connect(m_title, &QLineEdit::returnPressed, m_body, [this] { m_body->setFocus(); });
    connect(m_category, &CategoryField::chosen, &m_model, &PromptEditorModel::selectCategory);
    connect(m_newCategoryToggle, &QPushButton::clicked, this, [this] {
        m_model.setCreatingCategory(!m_model.isCreatingCategory());
        if (m_model.isCreatingCategory())
            m_newCategory->nameField().setFocus();
    });
    connect(m_body, &EditorTextView::contentEdited, this, &PromptEditorForm::onTextEdited);
    connect(m_body, &EditorTextView::insertionRefused, &m_model, &EditorModel::refuseInsertion);
    connect(m_optimize, &QPushButton::clicked, &m_model, &PromptEditorModel::optimize);
    connect(m_undoOptimize, &QPushButton::clicked, &m_model, &PromptEditorModel::undoOptimize);
    connect(m_variable, &QLineEdit::textEdited, &m_model, &PromptEditorModel::setVariableName);
    connect(m_variable, &QLineEdit::returnPressed, &m_model, &PromptEditorModel::insertVariable);
    connect(m_insert, &QPushButton::clicked, &m_model, &PromptEditorModel::insertVariable);

    connect(&m_model, &EditorModel::contentReplaced, this, &PromptEditorForm::showContent);
    connect(&m_model, &EditorModel::isSavingChanged, this, &PromptEditorForm::setEditable);
    connect(&m_model, &PromptEditorModel::categoriesChanged, this, &PromptEditorForm::refreshCategories);
    connect(&m_model, &PromptEditorModel::newCategoryChanged, this, &PromptEditorForm::refreshNewCategory);
    connect(&m_model, &PromptEditorModel::variableNameChanged, this, &PromptEditorForm::setEditable);
    connect(&m_model, &PromptEditorModel::optimizationChanged, this, &PromptEditorForm::refreshOptimization);
    connect(&m_model, &PromptEditorModel::textReplaced, this,
            [this] { m_body->replaceContent(m_model.text()); });
    connect(&m_model, &PromptEditorModel::insertionRequested, this, [this] {
        m_body->perform(*m_model.pendingInsertion());
        m_body->setFocus();
    });
}

void PromptEditorForm::onTextEdited()
{
    m_model.setText(m_body->content());
    refreshText();
}

void PromptEditorForm::refreshText()
{
    m_chips->setText(m_model.text());
    // Without values a prompt is rendered as it is written.
    m_preview->followContent(m_model.text());
}

void PromptEditorForm::showContent()
{
    m_title->setText(m_model.title());
    if (m_body->content() != m_model.text())
        m_body->resetContent(m_model.text());
    refreshText();
    refreshCategories();
    refreshNewCategory();
    refreshOptimization();
    setEditable();
}

void PromptEditorForm::refreshCategories()
{
    m_category->setCategories(m_model.categories(), m_model.selectedCategoryID());
    m_category->setEnabled(!m_model.isSaving() && !m_model.categories().isEmpty());
}

void PromptEditorForm::refreshNewCategory()
{
    const bool isOpen = m_model.isCreatingCategory();
    const bool hadFocus = m_newCategory->isAncestorOf(window()->focusWidget());
    m_newCategoryToggle->setLabel(isOpen ? m_texts.hideNewCategory : QStringLiteral("New Category"));
    if (!isOpen && hadFocus)
        m_body->setFocus();
    m_newCategory->setVisible(isOpen);
}

void PromptEditorForm::refreshOptimization()
{
    const bool isOptimizing = m_model.isOptimizing();
    m_optimize->setLabel(isOptimizing ? QStringLiteral("Optimizing...") : m_texts.optimize);
    m_optimize->setBusy(isOptimizing);
    m_optimize->setEnabled(!isOptimizing && !m_model.isSaving());
    m_undoOptimize->setVisible(m_model.previousText().has_value());
    m_undoOptimize->setEnabled(!m_model.isSaving());
}

/// What is being saved must not change under it.
void PromptEditorForm::setEditable()
{
    const bool isSaving = m_model.isSaving();
    if (m_variable->text() != m_model.variableName())
        m_variable->setText(m_model.variableName());
    m_title->setReadOnly(isSaving);
    m_body->setReadOnly(isSaving);
    refreshCategories();
    m_newCategory->setEnabled(!isSaving);
    m_newCategoryToggle->setEnabled(!isSaving);
    m_insert->setEnabled(!isSaving && !PromptEditorModel::insertableName(m_model.variableName()).isEmpty());
    refreshOptimization();
}
