// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QBoxLayout;
class TextLabel;
class ThemedButton;

/// The heading over a field, with the buttons that act on the field at its right end. Where they have no room
/// beside the heading, the buttons stand below it; where they have none beside each other, one below the
/// other.
class HeadingRow final : public QWidget
{
    Q_OBJECT

public:
    HeadingRow(const QString &heading, const QList<ThemedButton *> &buttons, QWidget *parent = nullptr);

private:
    void arrange();

    TextLabel *m_heading;
    QList<ThemedButton *> m_buttons;
    QBoxLayout *m_row;
    QBoxLayout *m_end;
};
