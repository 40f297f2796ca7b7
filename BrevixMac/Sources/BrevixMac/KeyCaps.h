// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "KeyboardShortcut.h"

#include <QStringList>
#include <QWidget>

/// A shortcut as a row of key caps. Its accessible name is the shortcut's label.
class KeyCaps final : public QWidget
{
    Q_OBJECT

public:
    explicit KeyCaps(QWidget *parent = nullptr);

    void setShortcut(const KeyboardShortcut &shortcut);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void onThemeChanged();
    int capWidth(const QString &legend) const;
    int capHeight() const;

    QStringList m_legends;
};
