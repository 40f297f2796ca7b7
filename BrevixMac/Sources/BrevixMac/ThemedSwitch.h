// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCheckBox>
#include <QVariantAnimation>

/// A switch drawn with the theme. Its name is its accessible name; the row it stands in shows it. Takes the
/// focus from the keyboard only.
class ThemedSwitch final : public QCheckBox
{
    Q_OBJECT

public:
    explicit ThemedSwitch(const QString &name, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }
    void keyPressEvent(QKeyEvent *event) override;

private:
    void slide(bool isOn);

    QVariantAnimation m_knob; ///< from 0, off, to 1, on
};
