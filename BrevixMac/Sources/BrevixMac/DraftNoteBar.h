// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class EditorModel;
class TextLabel;
class ThemedButton;

/// The quiet note that a draft was restored, or can be. Takes no room when there is nothing to say.
class DraftNoteBar final : public QWidget
{
    Q_OBJECT

public:
    /// @p margin is free at both sides. @p model must outlive this widget.
    DraftNoteBar(EditorModel &model, int margin, QWidget *parent);

    QString text() const;
    ThemedButton &button() const { return *m_button; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void refresh();
    void act();
    void onThemeChanged();

    EditorModel &m_model;
    int m_margin;
    TextLabel *m_text;
    ThemedButton *m_button;
};
