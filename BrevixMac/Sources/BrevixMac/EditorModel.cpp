// SPDX-License-Identifier: GPL-3.0-or-later
#include "EditorModel.h"

#include "AppState.h"

#include "Foundation/Text.h"

namespace {

/// Why texts of this size cannot be saved; nothing when they can.
std::optional<QString> problemOfSize(const QString &title, const QString &text)
{
    // A UTF-16 unit takes one to three bytes of UTF-8; a huge text need not be converted to be refused.
    qsizetype bytes = title.size() + text.size();
    if (bytes <= EditorModel::maximumSavedBytes)
        bytes = title.toUtf8().size() + text.toUtf8().size();
    if (bytes <= EditorModel::maximumSavedBytes)
        return std::nullopt;
    const double megabytes = static_cast<double>(bytes) / (1024 * 1024);
    return QStringLiteral("This text is too large to be saved: it has %1 MB, and the library holds 1 MB. "
                          "Shorten it and save again.")
        .arg(megabytes, 0, 'f', megabytes < 10 ? 2 : 0);
}

} // namespace

EditorModel::EditorModel(AppState &appState, DraftStore::Form form, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_session(std::make_unique<DraftSession>(appState.draftStore(), appState.authService(), form,
                                               [this] { return content(); }))
{
    connect(m_session.get(), &DraftSession::accountChanged, this, &EditorModel::onAccountChanged);
    connect(m_session.get(), &DraftSession::tooLongChanged, this,
            [this] { setDraftNote(m_session->isTooLong() ? DraftNote::tooLong : DraftNote::none); });
}

EditorModel::~EditorModel() = default;

void EditorModel::closeSession()
{
    // Its last store may have news, which nobody is left to hear.
    m_session->disconnect(this);
    m_session.reset();
}

bool EditorModel::begin()
{
    if (m_isSaving || !content().isBlank())
        return false;
    const auto draft = m_session->open();
    if (draft)
        replaceContent(*draft);
    setDraftNote(draft                       ? DraftNote::restored
                 : m_session->hasCancelled() ? DraftNote::cancelled
                                             : DraftNote::none);
    return true;
}

void EditorModel::cancel()
{
    if (m_isSaving)
        return;
    m_session->cancel();
    replaceContent({});
    setStatus({});
    setDraftNote(DraftNote::none);
}

void EditorModel::discardDraft()
{
    if (m_isSaving)
        return;
    cancel();
    if (m_session->hasCancelled())
        setDraftNote(DraftNote::discarded);
}

void EditorModel::restoreCancelled()
{
    if (m_isSaving)
        return;
    const auto draft = m_session->takeCancelled();
    if (!draft)
        return;
    replaceContent(*draft);
    setDraftNote(DraftNote::restored);
}

void EditorModel::handOver(EditorModel &other)
{
    for (EditorModel *model : {this, &other}) {
        if (model->pullText)
            model->pullText();
    }
    const EditorDraft given = content();
    if (m_isSaving || other.m_isSaving || given.isBlank() || !other.content().isBlank())
        return;
    other.replaceContent(given);
    other.setDraftNote(DraftNote::none);
    other.noteEdit();
    other.flush(); // before this one's draft goes
    forgetContent();
}

void EditorModel::flush()
{
    m_session->flush();
}

void EditorModel::refuseInsertion()
{
    showProblem(
        QStringLiteral("That text is too large to be pasted here. The library holds texts of up to 1 MB."));
}

void EditorModel::replaceContent(const EditorDraft &content)
{
    m_contentTasks.restart();
    setContent(content);
    Q_EMIT contentReplaced();
    Q_EMIT canSaveChanged();
}

void EditorModel::onAccountChanged()
{
    setSaving(false);
    setStatus({});
    replaceContent({});
    begin();
}

void EditorModel::noteEdit()
{
    m_session->noteChange();
    Q_EMIT canSaveChanged();
}

void EditorModel::setStatus(const std::optional<EditorStatusMessage> &status)
{
    if (status == m_statusMessage)
        return;
    m_statusMessage = status;
    Q_EMIT statusMessageChanged();
}

void EditorModel::setSaving(bool isSaving)
{
    if (isSaving == m_isSaving)
        return;
    m_isSaving = isSaving;
    Q_EMIT isSavingChanged();
    Q_EMIT canSaveChanged();
}

void EditorModel::setDraftNote(DraftNote note)
{
    if (note == m_draftNote)
        return;
    m_draftNote = note;
    Q_EMIT draftNoteChanged();
}

std::optional<QString> EditorModel::beginSaving()
{
    if (m_isSaving)
        return std::nullopt;
    if (pullText)
        pullText();
    if (const auto problem = savingProblem()) {
        showProblem(*problem);
        return std::nullopt;
    }
    if (!canSave())
        return std::nullopt;
    const EditorDraft draft = content();
    const QString title = Text::trimmed(draft.title);
    if (const auto problem = problemOfSize(title, draft.text)) {
        showProblem(*problem);
        return std::nullopt;
    }
    setStatus({});
    setSaving(true);
    return title;
}

void EditorModel::forgetContent()
{
    replaceContent({});
    m_session->finish();
    setStatus({});
    setDraftNote(DraftNote::none);
}

bool EditorModel::isEditable(const QString &text)
{
    if (text.size() > maximumEditableLength)
        return false;
    qsizetype start = 0;
    while (start < text.size()) {
        const qsizetype end = text.indexOf(u'\n', start);
        if ((end < 0 ? text.size() : end) - start > maximumEditableLine)
            return false;
        if (end < 0)
            break;
        start = end + 1;
    }
    return true;
}
