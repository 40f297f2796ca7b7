// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRadioButton>

/// One choice of several in a settings card: a radio mark, a title and a description. The whole row is the
/// target.
class ChoiceRow final : public QRadioButton
{
    Q_OBJECT

public:
    ChoiceRow(const QString &title, const QString &description, QWidget *parent = nullptr);

    QString title() const { return m_title; }
    QString description() const { return m_description; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }

private:
    struct Frames
    {
        QRect mark;
        QRect title;
        QRect description;
        int height = 0;
    };

    void onThemeChanged();
    Frames frames(int width) const;

    QString m_title;
    QString m_description;
};
