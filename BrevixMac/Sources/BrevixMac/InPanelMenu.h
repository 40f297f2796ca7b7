// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>
#include <QPointer>

class ThemedButton;

/// A small menu drawn inside the panel, because a panel cannot open windows of its own on every desktop.
/// Closes on Escape, on a choice, and on a press elsewhere in the window.
class InPanelMenu final : public QFrame
{
    Q_OBJECT

public:
    explicit InPanelMenu(QWidget *parent);

    ThemedButton &addEntry(const QString &text, const QString &symbol);

    /// A line of small text under the entries.
    void addNote(const QString &text);

    /// Opens with its lower left corner at @p corner of the parent, kept inside the parent.
    void openAbove(const QPoint &corner);
    void close();

Q_SIGNALS:
    void closed();

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void moveFocus(int step);

    QPointer<QWidget> m_focusBefore;
};
