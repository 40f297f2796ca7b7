// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "EditorModel.h"
#include "Models.h"
#include "SkillFileReader.h"

/// What the skill editor decides: fields, import, statistics, saving. The form shows it.
class SkillEditorModel final : public EditorModel
{
    Q_OBJECT

public:
    /// @p appState must outlive this object.
    explicit SkillEditorModel(AppState &appState, QObject *parent = nullptr);
    ~SkillEditorModel() override;

    const QString &title() const { return m_title; }
    void setTitle(const QString &title);
    const QString &text() const { return m_text; }
    void setText(const QString &text);
    const std::optional<QString> &sourceFilename() const { return m_sourceFilename; }

    /// False while the text is one that can only be shown in part and saved whole.
    bool isTextEditable() const { return m_isTextEditable; }

    /// Reads the file at @p path and puts its text into the form; a problem leaves the form as it was.
    void importFile(const QString &path);
    bool isImporting() const { return m_reader.isReading(); }

    /// What the form held before a text came in that cannot be edited.
    void removeImportedText();

    /// The line under the text.
    QString statistics() const;

    bool canSave() const override;
    void save() override;

Q_SIGNALS:
    void titleReplaced();
    /// The text view shall show text() in place of what it has, as one step that can be undone.
    void textReplaced();
    void sourceFilenameChanged();
    void isImportingChanged();
    void skillSaved(const SkillItem &skill);

protected:
    EditorDraft content() const override;
    void setContent(const EditorDraft &content) override;

private:
    void onFileRead(const SkillFile &file);
    void replaceText(const QString &text);

    QString m_title;
    QString m_text;
    bool m_isTextEditable = true;
    std::optional<QString> m_sourceFilename;
    QString m_textBeforeImport;
    std::optional<QString> m_sourceBeforeImport;
    qsizetype m_importedWords = 0; ///< counted while reading, for a text that cannot be edited
    qsizetype m_importedLines = 0;
    SkillFileReader m_reader;
};
