// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QAbstractButton;

/// The colours offered for a new category, of which one is chosen, by pointer or arrow keys.
class ColorSwatches final : public QWidget
{
    Q_OBJECT

public:
    explicit ColorSwatches(QWidget *parent = nullptr);

    /// The chosen colour's value.
    void select(const QString &value);

    const QList<QAbstractButton *> &swatches() const { return m_swatches; }

Q_SIGNALS:
    void selected(const QString &value);

private:
    QList<QAbstractButton *> m_swatches;
};
