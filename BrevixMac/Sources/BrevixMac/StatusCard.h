// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Theme.h"

#include <QFrame>

class QBoxLayout;
class QVBoxLayout;
class TextLabel;

/// A rounded card with a symbol, a title or a detail or both, and room for buttons at its right end; where
/// they leave the texts too little room, below them. Long texts wrap.
class StatusCard final : public QFrame
{
    Q_OBJECT

public:
    enum class Tint { neutral, success, warning, danger };

    explicit StatusCard(QWidget *parent = nullptr);

    /// An empty @p title or @p detail takes no room. Of a long one the beginning is shown.
    void describe(Tint tint, const QString &symbol, const QString &title, const QString &detail);

    /// Puts @p button at the right end, in the order of the calls.
    void addButton(QWidget *button);

    /// Shows a turning ring in place of the symbol.
    void setBusy(bool busy);

    Tint tint() const { return m_tint; }
    QString title() const;
    QString detail() const;
    QString symbol() const { return m_symbol; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void onThemeChanged();
    void arrange();
    void updateTurning();
    Theme::Color ink() const;
    Theme::Color background() const;

    Tint m_tint = Tint::neutral;
    QString m_symbol;
    TextLabel *m_title;
    TextLabel *m_detail;
    QBoxLayout *m_row;
    QVBoxLayout *m_texts;
    QBoxLayout *m_buttons;
    int m_turningTimer = 0;
    qreal m_turns = 0;
    bool m_isBusy = false;
};
