// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

/// The sunken box around a text that can be read and selected, with the focus ring of the text inside it.
class PreviewBox final : public QWidget
{
    Q_OBJECT

public:
    /// Takes @p text over.
    explicit PreviewBox(QWidget *text, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *m_text;
};
