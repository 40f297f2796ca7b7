// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "EditorModel.h"
#include "Models.h"

#include <QUuid>

/// A one-shot request to the body text view to insert a text at its selection. A new identifier makes it act
/// again, even with the same text.
struct TextInsertionCommand
{
    QUuid id;
    QString text;

    static TextInsertionCommand inserting(const QString &text) { return {QUuid::createUuid(), text}; }

    bool operator==(const TextInsertionCommand &) const = default;
};

/// A colour offered for a new category.
struct CategoryColor
{
    QString name;
    QString value; ///< a number sign and six lower-case hexadecimal digits

    /// The table, in the order it is shown; the first is the one chosen for a new category.
    static const QList<CategoryColor> &all();
};

using MenuBarCategoryColor = CategoryColor;

/// What both prompt editors decide: fields, categories, variables, optimisation, saving. The forms show it.
class PromptEditorModel final : public EditorModel
{
    Q_OBJECT

public:
    /// @p categoryNeeded is said when a prompt is to be saved without a category. @p appState must outlive
    /// this.
    PromptEditorModel(AppState &appState, DraftStore::Form form, QString categoryNeeded,
                      QObject *parent = nullptr);
    ~PromptEditorModel() override;

    const QString &title() const { return m_title; }
    void setTitle(const QString &title);
    const QString &text() const { return m_text; }
    void setText(const QString &text);
    const QString &selectedCategoryID() const { return m_selectedCategoryID; }
    void selectCategory(const QString &id);
    /// The selected category, when the library has it.
    std::optional<PromptCategory> selectedCategory() const;
    const QList<PromptCategory> &categories() const;
    const QString &variableName() const { return m_variableName; }
    void setVariableName(const QString &name);
    const QString &newCategoryName() const { return m_newCategoryName; }
    void setNewCategoryName(const QString &name);
    const QString &selectedCategoryColor() const { return m_selectedCategoryColor; }
    void selectCategoryColor(const QString &value);

    /// The new-category form is open.
    bool isCreatingCategory() const { return m_isCreatingCategory; }
    void setCreatingCategory(bool isCreating);
    /// The new category is being written.
    bool isWritingCategory() const { return m_isWritingCategory; }
    bool isOptimizing() const { return m_isOptimizing; }
    const std::optional<QString> &previousText() const { return m_previousText; }
    const std::optional<TextInsertionCommand> &pendingInsertion() const { return m_pendingInsertion; }

    bool canSave() const override;
    void save() override;
    void insertVariable();
    void createCategory();
    void optimize();
    void undoOptimize();

    /// A variable's name as it is inserted: trimmed, each run of white space one "_".
    static QString insertableName(const QString &typed);

Q_SIGNALS:
    void categoriesChanged();
    void newCategoryChanged();
    void variableNameChanged();
    void optimizationChanged();
    /// The body shall carry out pendingInsertion().
    void insertionRequested();
    /// The body shall show text() in place of what it has, as one step that can be undone.
    void textReplaced();
    void promptSaved(const PromptItem &prompt);

protected:
    std::optional<QString> savingProblem() const override;
    EditorDraft content() const override;
    void setContent(const EditorDraft &content) override;

private:
    QCoro::Task<> runCreateCategory(QString name, QString color, std::stop_token token);
    QCoro::Task<> runOptimize(QString text, std::stop_token token);
    void endOptimization(const Outcome<QString> &outcome);
    void onSavingFailed();
    void onLibraryChanged();
    void chooseDefaultCategory();
    void replaceText(const QString &text);
    void setOptimizing(bool isOptimizing);

    QString m_categoryNeeded;
    QString m_title;
    QString m_text;
    QString m_selectedCategoryID;
    QString m_selectedCategoryName; ///< to name it once it is gone
    QString m_variableName;
    std::optional<TextInsertionCommand> m_pendingInsertion;
    QString m_newCategoryName;
    QString m_selectedCategoryColor;
    bool m_isCreatingCategory = false;
    bool m_isWritingCategory = false;
    bool m_isCategoryGone = false;      ///< deleted elsewhere, and no other chosen yet
    bool m_hasAskedForCategory = false; ///< the new-category form was opened unasked
    bool m_isOptimizing = false;
    std::optional<QString> m_previousText;
    std::optional<Outcome<QString>> m_heldOptimization; ///< came while saving
    TaskScope m_tasks;                                  // keep last
};
