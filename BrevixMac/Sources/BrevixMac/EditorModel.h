// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "DraftSession.h"
#include "EditorStatusMessage.h"
#include "Outcome.h"

#include "Foundation/TaskScope.h"

#include <QObject>

#include <functional>
#include <memory>

class AppState;

/// What every editor shares, apart from widgets: the status line, the draft that is kept while typing, and
/// saving. Main thread only. Nothing is thrown: a failure becomes statusMessage() and the text stays.
class EditorModel : public QObject
{
    Q_OBJECT

public:
    /// What is to be said about drafts.
    enum class DraftNote {
        none,
        restored,  ///< the form shows a draft; it can be discarded
        cancelled, ///< the form is empty; what the last cancel threw away can be had back
        discarded, ///< the same, right after discarding
        tooLong,   ///< the text is longer than what is kept
    };

    /// The most UTF-8 bytes that a saved item's texts may have: a document of the library holds one mebibyte.
    static constexpr qsizetype maximumSavedBytes = 1'048'487;

    /// Longer texts, and texts with a longer line, are not edited: laying them out would hold up the main
    /// thread. In UTF-16 units.
    static constexpr qsizetype maximumEditableLength = 1024LL * 1024;
    static constexpr qsizetype maximumEditableLine = 128LL * 1024;
    static bool isEditable(const QString &text);

    ~EditorModel() override;

    const std::optional<EditorStatusMessage> &statusMessage() const { return m_statusMessage; }
    bool isSaving() const { return m_isSaving; }
    DraftNote draftNote() const { return m_draftNote; }

    virtual bool canSave() const = 0;
    virtual void save() = 0;

    /// The form appears: an empty one shows the draft, if there is one, or offers what was thrown away. False
    /// when it holds something already: its user goes on where they were.
    bool begin();

    /// Empties the form; what it held can be had back at the next begin(). While saving nothing is thrown
    /// away: the outcome decides.
    void cancel();

    /// Empties the form, which stays open and offers to undo that.
    void discardDraft();

    /// Shows what was thrown away last; what the form holds takes its place.
    void restoreCancelled();

    /// Gives everything on the form, which becomes empty, to an editor of the same kind. Does nothing while
    /// either saves, when there is nothing to give, or when @p other holds a text of its own.
    void handOver(EditorModel &other);

    /// Stores the draft now.
    void flush();

    /// A text was to be inserted that is too long to be edited.
    void refuseInsertion();

    /// Asked for the newest text before it is used, by a view that reports its text late.
    std::function<void()> pullText;

Q_SIGNALS:
    void statusMessageChanged();
    void isSavingChanged();
    void draftNoteChanged();
    void canSaveChanged();
    /// Every field has a new value: the form shall read them all.
    void contentReplaced();
    void saved();
    /// The content could not be saved and is still there; statusMessage() says why, right after this.
    void savingFailed();

protected:
    EditorModel(AppState &appState, DraftStore::Form form, QObject *parent);

    /// To be called by the destructor of the last class, while its content can still be read.
    void closeSession();

    virtual EditorDraft content() const = 0;
    virtual void setContent(const EditorDraft &content) = 0;

    AppState &appState() const { return m_appState; }
    /// The user has changed a field.
    void noteEdit();
    void setStatus(const std::optional<EditorStatusMessage> &status);
    void showProblem(const QString &problem) { setStatus(EditorStatusMessage{problem, true}); }

    /// Why the content cannot be saved, where that is worth a message.
    virtual std::optional<QString> savingProblem() const { return std::nullopt; }
    /// Starts saving: the title to save the newest content under, or nothing when it cannot be saved now.
    std::optional<QString> beginSaving();
    /// Ends saving with the outcome of @p creation. A saved content and its draft are forgotten, then
    /// @p announce and saved() are emitted by @p model.
    template <typename Model, typename Item>
    void endSaving(Model &model, QCoro::Task<Outcome<Item>> creation, void (Model::*announce)(const Item &))
    {
        detach(awaitCreation(model, std::move(creation), announce, m_contentTasks.token()),
               "saving what an editor holds");
    }

    /// Ends with the form's content: what works on it must not touch the next one.
    TaskScope &contentTasks() { return m_contentTasks; }

private:
    template <typename Model, typename Item>
    QCoro::Task<> awaitCreation(Model &model, QCoro::Task<Outcome<Item>> creation,
                                void (Model::*announce)(const Item &), std::stop_token token)
    {
        const Outcome<Item> outcome = co_await creation;
        if (token.stop_requested())
            co_return;
        setSaving(false);
        if (!outcome.value) {
            Q_EMIT savingFailed();
            showProblem(outcome.problem); // last: what was held back meanwhile must not hide it
            co_return;
        }
        forgetContent();
        Q_EMIT(model.*announce)(*outcome.value);
        Q_EMIT saved();
    }

    void setSaving(bool isSaving);
    void forgetContent();
    void replaceContent(const EditorDraft &content);
    void setDraftNote(DraftNote note);
    void onAccountChanged();

    AppState &m_appState;
    std::optional<EditorStatusMessage> m_statusMessage;
    bool m_isSaving = false;
    DraftNote m_draftNote = DraftNote::none;
    std::unique_ptr<DraftSession> m_session;
    TaskScope m_contentTasks;
};
