// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class EditorFrame;
class EditorModel;
class HintBubble;

/// A window around an editor of its own: its background, its head with symbol and title, tips, the shortcuts
/// of closing. Closing it keeps what was typed; only Cancel throws it away.
class EditorWindow : public QWidget
{
    Q_OBJECT

public:
    /// Shows the window in front of the others, with the focus where writing begins.
    void present();

protected:
    EditorWindow(const QString &title, const QSize &size);

    /// The head of the window, to be put above its form.
    QWidget *makeHeader(const QString &symbol, const QString &line);

    /// Puts the frame into the window.
    void setFrame(EditorModel &model, EditorFrame &frame);

    virtual void focusFirst() = 0;
    /// Reports what was typed and not reported yet.
    virtual void report() = 0;

    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;

private:
    void reappear();

    EditorModel *m_model = nullptr;
    HintBubble *m_hint;
};
