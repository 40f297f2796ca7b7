// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "TextLabel.h"

class QHBoxLayout;
class ThemedButton;

/// The head of a screen that can be left again: a chevron that goes back, the title, a line under it where
/// there is one, and room for buttons at the right end.
class PageHeader final : public QWidget
{
    Q_OBJECT

public:
    explicit PageHeader(const QString &title, QWidget *parent = nullptr);

    /// An empty @p text takes no room. Our own lines wrap; those of others may be of any length and are
    /// elided.
    void setSubtitle(const QString &text, TextLabel::Overflow overflow = TextLabel::Overflow::wrap);

    /// Draws a line below, and takes a little more height.
    void setUnderlined(bool isUnderlined);

    /// Puts @p button at the right end, in the order of the calls.
    void addButton(ThemedButton *button);

    ThemedButton &backButton() const { return *m_back; }
    QString title() const;
    QString subtitle() const;

Q_SIGNALS:
    void backRequested();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    ThemedButton *m_back;
    TextLabel *m_title;
    TextLabel *m_subtitle;
    QHBoxLayout *m_row;
    bool m_isUnderlined = false;
};
