// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLineEdit>

/// A one-line text field drawn with the theme: sunken, with an optional symbol at its start, and the focus
/// ring. Has no context menu, because the panel it lives in cannot have popups on every desktop.
class TextField final : public QLineEdit
{
    Q_OBJECT

public:
    explicit TextField(QWidget *parent = nullptr);

    void setSymbol(const QString &name);

    /// Height of the drawn control in design pixels: 38 when not said otherwise.
    void setDesignHeight(int height);

    /// It is empty, and some of its placeholder is not shown.
    bool isPlaceholderCut() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;

private:
    void onThemeChanged();

    QString m_symbol;
    int m_designHeight = 38;
};
