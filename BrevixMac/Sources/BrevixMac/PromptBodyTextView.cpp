// SPDX-License-Identifier: GPL-3.0-or-later
#include "PromptBodyTextView.h"

PromptBodyTextView::PromptBodyTextView(QWidget *parent)
    : EditorTextView(parent)
{
    setMarksVariables(true);
    setAccessibleName(QStringLiteral("Prompt Text"));
}

PromptBodyTextView::Range PromptBodyTextView::selectionRange() const
{
    const QTextCursor cursor = textCursor();
    return {cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart()};
}

void PromptBodyTextView::perform(const TextInsertionCommand &command)
{
    if (command.id == m_lastInsertion)
        return;
    m_lastInsertion = command.id;
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.insertText(command.text);
    cursor.endEditBlock();
    setTextCursor(cursor);
    ensureCursorVisible();
}
