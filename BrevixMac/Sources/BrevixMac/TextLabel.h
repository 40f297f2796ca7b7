// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Theme.h"

#include <QLabel>

/// A label in one of the theme's types and inks. Shows its text as it stands, never as markup.
class TextLabel final : public QLabel
{
    Q_OBJECT

public:
    enum class Overflow { wrap, elide };

    TextLabel(Theme::Type type, Theme::Color ink, Overflow overflow, QWidget *parent = nullptr);

    void setOverflow(Overflow overflow);

    /// Which end gives way when the text is too long: the right one when not said otherwise.
    void setElideMode(Qt::TextElideMode mode);

    /// Some of the text is not shown.
    bool isElided() const;

    void setInk(Theme::Color ink);
    Theme::Color ink() const { return m_ink; }

    QSize sizeHint() const override;
    int heightForWidth(int width) const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void onThemeChanged();
    bool breaksWords(int width) const;

    Theme::Type m_type;
    Theme::Color m_ink;
    Overflow m_overflow = Overflow::wrap;
    Qt::TextElideMode m_elideMode = Qt::ElideRight;
};
