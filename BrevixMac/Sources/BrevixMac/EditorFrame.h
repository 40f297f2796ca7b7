// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class DraftNoteBar;
class EditorModel;
class EditorStatusLine;
class QVBoxLayout;
class ThemedButton;

/// What stands around every editor's form: a note about drafts above it, below it the status line and the
/// buttons Cancel and save. Ctrl+S and Ctrl+Return save, Escape cancels.
class EditorFrame final : public QWidget
{
    Q_OBJECT

public:
    /// @p margin is free at both sides. @p model must outlive this widget.
    EditorFrame(EditorModel &model, QWidget *header, QWidget *form, const QString &saveText, int margin,
                QWidget *parent);

    ThemedButton &saveButton() const { return *m_save; }
    ThemedButton &cancelButton() const { return *m_cancel; }
    EditorStatusLine &statusLine() const { return *m_status; }
    DraftNoteBar &draftNote() const { return *m_note; }

    /// Makes Tab visit @p before, the note, @p form, and the buttons at last.
    void setTabOrders(const QList<QWidget *> &before, const QList<QWidget *> &form);

    /// Throws the form's content away, so that it can be had back, and asks to be closed.
    void cancel();

Q_SIGNALS:
    void cancelled();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QWidget *makeFooter(int margin);
    void refreshButtons();
    void refreshStatus();
    void placeStatus();

    EditorModel &m_model;
    QString m_saveText;
    DraftNoteBar *m_note;
    EditorStatusLine *m_status;
    ThemedButton *m_cancel;
    ThemedButton *m_save;
    QVBoxLayout *m_footer = nullptr;
    QWidget *m_buttons = nullptr;
};
