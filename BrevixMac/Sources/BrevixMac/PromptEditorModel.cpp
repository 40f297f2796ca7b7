// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptEditorModel.h"

#include "AppState.h"

#include "Foundation/Text.h"

#include <algorithm>
#include <utility>

namespace {

bool isSynced(const LibraryStore &library)
{
    return library.syncState().kind == SyncState::Kind::synced;
}

std::optional<PromptCategory> find(const QList<PromptCategory> &categories, const QString &id)
{
    const auto found = std::find_if(categories.begin(), categories.end(),
                                    [&](const PromptCategory &category) { return category.id == id; });
    return found == categories.end() ? std::nullopt : std::optional(*found);
}

} // namespace

const QList<CategoryColor> &CategoryColor::all()
{
    static const QList<CategoryColor> colors{
        {QStringLiteral("Purple"), QStringLiteral("#8b5cf6")},
        {QStringLiteral("Blue"), QStringLiteral("#3b82f6")},
        {QStringLiteral("Green"), QStringLiteral("#10b981")},
        {QStringLiteral("Pink"), QStringLiteral("#ec4899")},
        {QStringLiteral("Orange"), QStringLiteral("#f97316")},
        {QStringLiteral("Red"), QStringLiteral("#ef4444")},
    };
    return colors;
}

PromptEditorModel::PromptEditorModel(AppState &appState, DraftStore::Form form, QString categoryNeeded,
                                     QObject *parent)
    : EditorModel(appState, form, parent)
    , m_categoryNeeded(std::move(categoryNeeded))
    , m_selectedCategoryColor(CategoryColor::all().first().value)
{
    connect(&appState, &AppState::libraryChanged, this, &PromptEditorModel::onLibraryChanged);
    connect(this, &EditorModel::savingFailed, this, &PromptEditorModel::onSavingFailed);
    onLibraryChanged();
}

PromptEditorModel::~PromptEditorModel()
{
    closeSession();
}

// Fields

void PromptEditorModel::setTitle(const QString &title)
{
    if (title == m_title)
        return;
    m_title = title;
    noteEdit();
}

void PromptEditorModel::setText(const QString &text)
{
    if (text == m_text)
        return;
    m_text = text;
    noteEdit();
}

void PromptEditorModel::setVariableName(const QString &name)
{
    if (name == m_variableName)
        return;
    m_variableName = name;
    noteEdit();
    Q_EMIT variableNameChanged();
}

void PromptEditorModel::setNewCategoryName(const QString &name)
{
    if (name == m_newCategoryName)
        return;
    m_newCategoryName = name;
    noteEdit();
    Q_EMIT newCategoryChanged();
}

void PromptEditorModel::selectCategoryColor(const QString &value)
{
    if (value == m_selectedCategoryColor)
        return;
    m_selectedCategoryColor = value;
    noteEdit();
    Q_EMIT newCategoryChanged();
}

void PromptEditorModel::setCreatingCategory(bool isCreating)
{
    if (isCreating == m_isCreatingCategory)
        return;
    m_isCreatingCategory = isCreating;
    Q_EMIT newCategoryChanged();
}

// Categories

const QList<PromptCategory> &PromptEditorModel::categories() const
{
    return appState().libraryStore().categories();
}

std::optional<PromptCategory> PromptEditorModel::selectedCategory() const
{
    return find(categories(), m_selectedCategoryID);
}

void PromptEditorModel::selectCategory(const QString &id)
{
    if (id == m_selectedCategoryID)
        return;
    m_selectedCategoryID = id;
    m_isCategoryGone = false;
    const auto category = selectedCategory();
    m_selectedCategoryName = category ? category->name : QString();
    noteEdit();
    Q_EMIT categoriesChanged();
}

void PromptEditorModel::onLibraryChanged()
{
    const bool isGone = !m_selectedCategoryID.isEmpty() && !selectedCategory();
    // A list that is still on its way, or was cleared by signing out, says nothing about deletion.
    if (isGone && appState().authService().currentUser() && isSynced(appState().libraryStore())) {
        const QString name = m_selectedCategoryName.isEmpty() ? QStringLiteral("of this prompt")
                                                              : QString(u'"' + m_selectedCategoryName + u'"');
        selectCategory({});
        m_isCategoryGone = true; // a silent change of category would hide the prompt from its user
        showProblem(QStringLiteral("The category %1 no longer exists. Choose another one.").arg(name));
    } else if (const auto category = selectedCategory()) {
        m_selectedCategoryName = category->name;
    }
    if (m_selectedCategoryID.isEmpty() && !m_isCategoryGone)
        chooseDefaultCategory();
    Q_EMIT categoriesChanged();
    Q_EMIT canSaveChanged();
}

void PromptEditorModel::chooseDefaultCategory()
{
    const auto &known = categories();
    const auto filtered = find(known, appState().selectedCategoryID().value_or(QString()));
    if (filtered || !known.isEmpty()) {
        const PromptCategory &chosen = filtered ? *filtered : known.first();
        m_selectedCategoryID = chosen.id;
        m_selectedCategoryName = chosen.name;
    }
    // Without any category the next thing to do is to make one.
    if (known.isEmpty() && isSynced(appState().libraryStore()) && !std::exchange(m_hasAskedForCategory, true))
        setCreatingCategory(true);
}

void PromptEditorModel::createCategory()
{
    const QString name = Text::trimmed(m_newCategoryName);
    if (name.isEmpty() || m_isWritingCategory || isSaving())
        return;
    m_isWritingCategory = true;
    Q_EMIT newCategoryChanged();
    detach(runCreateCategory(name, m_selectedCategoryColor, m_tasks.token()), "creating a category");
}

QCoro::Task<> PromptEditorModel::runCreateCategory(QString name, QString color, std::stop_token token)
{
    const std::stop_token contentToken = contentTasks().token();
    const Outcome<PromptCategory> outcome = co_await appState().createCategory(name, color);
    if (token.stop_requested())
        co_return;
    m_isWritingCategory = false;
    if (!outcome.value) {
        showProblem(outcome.problem);
    } else if (!contentToken.stop_requested()) {
        m_selectedCategoryID = outcome.value->id;
        m_selectedCategoryName = outcome.value->name;
        m_isCategoryGone = false;
        m_newCategoryName.clear();
        m_isCreatingCategory = false;
        setStatus(EditorStatusMessage{QStringLiteral("Created category \"%1\".").arg(name), false});
        noteEdit();
    }
    Q_EMIT newCategoryChanged();
    Q_EMIT categoriesChanged();
}

// Variables

QString PromptEditorModel::insertableName(const QString &typed)
{
    const QString trimmed = Text::trimmed(typed);
    QString name;
    name.reserve(trimmed.size());
    bool isInBlanks = false;
    for (const QChar character : trimmed) {
        if (!character.isSpace())
            name += character;
        else if (!isInBlanks)
            name += u'_';
        isInBlanks = character.isSpace();
    }
    return name;
}

void PromptEditorModel::insertVariable()
{
    const QString name = insertableName(m_variableName);
    if (name.isEmpty() || isSaving())
        return;
    m_pendingInsertion = TextInsertionCommand::inserting(u"{{" + name + u"}}");
    setVariableName({});
    Q_EMIT insertionRequested();
}

// Optimisation

void PromptEditorModel::setOptimizing(bool isOptimizing)
{
    m_isOptimizing = isOptimizing;
    Q_EMIT optimizationChanged();
}

void PromptEditorModel::optimize()
{
    if (m_isOptimizing || isSaving())
        return;
    if (pullText)
        pullText();
    setStatus({});
    setOptimizing(true);
    detach(runOptimize(m_text, contentTasks().token()), "optimizing a prompt");
}

QCoro::Task<> PromptEditorModel::runOptimize(QString text, std::stop_token token)
{
    const Outcome<QString> outcome = co_await appState().optimize(text);
    if (token.stop_requested())
        co_return;
    if (isSaving())
        m_heldOptimization = outcome; // what is being saved must not change
    else
        endOptimization(outcome);
}

void PromptEditorModel::onSavingFailed()
{
    if (m_heldOptimization)
        endOptimization(*std::exchange(m_heldOptimization, std::nullopt));
}

void PromptEditorModel::endOptimization(const Outcome<QString> &outcome)
{
    if (outcome.value && !isEditable(*outcome.value)) {
        showProblem(QStringLiteral("The optimized text is too large."));
    } else if (outcome.value) {
        // What was typed meanwhile belongs to the text that can be had back.
        if (pullText)
            pullText();
        m_previousText = m_text;
        replaceText(*outcome.value);
        setStatus(
            EditorStatusMessage{QStringLiteral("Prompt optimized. You can undo before saving."), false});
    } else {
        showProblem(outcome.problem);
    }
    setOptimizing(false);
}

void PromptEditorModel::undoOptimize()
{
    if (!m_previousText || isSaving())
        return;
    const QString text = *m_previousText;
    m_previousText.reset();
    replaceText(text);
    setStatus({});
    Q_EMIT optimizationChanged();
}

void PromptEditorModel::replaceText(const QString &text)
{
    m_text = text;
    noteEdit();
    Q_EMIT textReplaced();
}

// Saving

bool PromptEditorModel::canSave() const
{
    return !isSaving() && !m_selectedCategoryID.isEmpty() && !Text::isBlank(m_title) &&
           !Text::isBlank(m_text);
}

std::optional<QString> PromptEditorModel::savingProblem() const
{
    return m_selectedCategoryID.isEmpty() ? std::optional(m_categoryNeeded) : std::nullopt;
}

void PromptEditorModel::save()
{
    if (const auto title = beginSaving())
        endSaving(*this, appState().createPrompt(*title, m_text, m_selectedCategoryID),
                  &PromptEditorModel::promptSaved);
}

// Drafts

EditorDraft PromptEditorModel::content() const
{
    return {.title = m_title,
            .text = m_text,
            .categoryID = m_selectedCategoryID,
            .variableName = m_variableName,
            .newCategoryName = m_newCategoryName,
            .newCategoryColor = m_selectedCategoryColor,
            .previousText = m_previousText};
}

void PromptEditorModel::setContent(const EditorDraft &content)
{
    m_title = content.title;
    m_text = content.text;
    m_variableName = content.variableName;
    m_newCategoryName = content.newCategoryName;
    m_selectedCategoryColor =
        content.newCategoryColor.isEmpty() ? CategoryColor::all().first().value : content.newCategoryColor;
    m_isCreatingCategory = !Text::isBlank(content.newCategoryName);
    m_previousText = content.previousText;
    m_isOptimizing = false;
    m_heldOptimization.reset();
    m_pendingInsertion.reset();
    m_selectedCategoryID = content.categoryID;
    m_selectedCategoryName.clear();
    m_isCategoryGone = false;
    m_hasAskedForCategory = false;
    onLibraryChanged();
    Q_EMIT newCategoryChanged();
    Q_EMIT optimizationChanged();
}
