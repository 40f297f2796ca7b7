// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QVBoxLayout;

/// A titled group of rows on a raised card, with a hairline between each two. Hidden rows take no room.
class SettingsCard final : public QWidget
{
    Q_OBJECT

public:
    explicit SettingsCard(const QString &title, QWidget *parent = nullptr);

    QString title() const { return accessibleName(); }
    void addRow(QWidget *row);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void onThemeChanged();

    QWidget *m_title;
    QVBoxLayout *m_column;
    QVBoxLayout *m_rows;
};
