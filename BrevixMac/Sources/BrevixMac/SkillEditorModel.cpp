// SPDX-License-Identifier: GPL-3.0-or-later
#include "SkillEditorModel.h"

#include "AppState.h"
#include "SkillImport.h"

#include "Foundation/Text.h"

#include <algorithm>

SkillEditorModel::SkillEditorModel(AppState &appState, QObject *parent)
    : EditorModel(appState, DraftStore::Form::skill, parent)
{
    connect(&m_reader, &SkillFileReader::isReadingChanged, this, &SkillEditorModel::isImportingChanged);
    connect(&m_reader, &SkillFileReader::finished, this, &SkillEditorModel::onFileRead);
    connect(&m_reader, &SkillFileReader::failed, this,
            [this](const QString &problem) { showProblem(u"Couldn't import that file: " + problem); });
}

SkillEditorModel::~SkillEditorModel()
{
    m_reader.disconnect(this);
    closeSession();
}

void SkillEditorModel::setTitle(const QString &title)
{
    if (title == m_title)
        return;
    m_title = title;
    noteEdit();
}

void SkillEditorModel::setText(const QString &text)
{
    if (!m_isTextEditable || text == m_text)
        return;
    m_text = text;
    noteEdit();
}

// Import

void SkillEditorModel::importFile(const QString &path)
{
    if (isSaving())
        return;
    setStatus({});
    m_reader.read(path);
}

void SkillEditorModel::onFileRead(const SkillFile &file)
{
    if (isSaving())
        return;
    if (pullText)
        pullText();
    if (m_isTextEditable) {
        m_textBeforeImport = m_text;
        m_sourceBeforeImport = m_sourceFilename;
    }
    m_sourceFilename = file.fileName;
    m_importedWords = file.words;
    m_importedLines = file.lines;
    if (Text::isBlank(m_title)) {
        m_title = SkillImport::suggestedTitle(file.text, file.nameWithoutExtension());
        Q_EMIT titleReplaced();
    }
    replaceText(file.text);
    setStatus(EditorStatusMessage{u"Imported " + file.fileName, false});
    Q_EMIT sourceFilenameChanged();
}

void SkillEditorModel::removeImportedText()
{
    if (m_isTextEditable || isSaving())
        return;
    m_sourceFilename = m_sourceBeforeImport;
    replaceText(m_textBeforeImport);
    setStatus({});
    Q_EMIT sourceFilenameChanged();
}

void SkillEditorModel::replaceText(const QString &text)
{
    m_text = text;
    m_isTextEditable = isEditable(text);
    noteEdit();
    Q_EMIT textReplaced();
}

QString SkillEditorModel::statistics() const
{
    qsizetype words = m_importedWords;
    qsizetype lines = m_importedLines;
    if (m_isTextEditable) {
        const QString trimmed = Text::trimmed(m_text);
        words = Text::wordCount(trimmed);
        lines = Text::lineCount(trimmed);
    }
    return QStringLiteral("%1 words \u2022 %2 lines").arg(words).arg(lines);
}

// Saving

bool SkillEditorModel::canSave() const
{
    return !isSaving() && !Text::isBlank(m_title) && !Text::isBlank(m_text);
}

void SkillEditorModel::save()
{
    const auto title = beginSaving();
    if (!title)
        return;
    m_reader.stop();
    endSaving(*this, appState().createSkill(*title, m_text, m_sourceFilename), &SkillEditorModel::skillSaved);
}

// Drafts

EditorDraft SkillEditorModel::content() const
{
    EditorDraft draft;
    draft.title = m_title;
    draft.text = m_text;
    draft.sourceFilename = m_sourceFilename;
    return draft;
}

void SkillEditorModel::setContent(const EditorDraft &content)
{
    m_reader.stop();
    m_title = content.title;
    m_text = content.text;
    m_isTextEditable = isEditable(m_text);
    m_sourceFilename = content.sourceFilename;
    m_textBeforeImport.clear();
    m_sourceBeforeImport.reset();
    if (!m_isTextEditable) {
        const QString trimmed = Text::trimmed(m_text);
        m_importedWords = Text::wordCount(trimmed);
        m_importedLines = Text::lineCount(trimmed);
    }
    Q_EMIT sourceFilenameChanged();
}
