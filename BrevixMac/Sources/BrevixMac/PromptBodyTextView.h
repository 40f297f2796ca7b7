// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "EditorTextView.h"
#include "PromptEditorModel.h"

/// The text of a prompt being written: carries out TextInsertionCommands at its selection.
class PromptBodyTextView final : public EditorTextView
{
    Q_OBJECT

public:
    /// The selected part of the text, in UTF-16 units; empty at the caret when nothing is selected.
    struct Range
    {
        int start = 0;
        int length = 0;

        bool operator==(const Range &) const = default;
    };

    explicit PromptBodyTextView(QWidget *parent = nullptr);

    Range selectionRange() const;

    /// Puts the command's text in place of the selection, as one step that can be undone. A command that was
    /// carried out already does nothing.
    void perform(const TextInsertionCommand &command);

private:
    QUuid m_lastInsertion;
};
