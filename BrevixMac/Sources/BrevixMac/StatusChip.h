// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Theme.h"

#include <QLabel>

/// A word in a tinted pill, with a symbol before it where it is given one: a state at the end of a row.
class StatusChip final : public QLabel
{
    Q_OBJECT

public:
    enum class Tint { neutral, success, warning, danger };

    explicit StatusChip(QWidget *parent = nullptr);

    void describe(Tint tint, const QString &text, const QString &symbol = {});
    Tint tint() const { return m_tint; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void onThemeChanged();

    int symbolRoom() const;

    Tint m_tint = Tint::neutral;
    QString m_symbol;
};
