// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Theme.h"

#include <QElapsedTimer>
#include <QPushButton>
#include <QTimer>

/// A push button drawn with the theme. Takes the focus from the keyboard only, so that a click leaves the
/// focus in the search field. Its text is always its accessible name, also where only the symbol is shown.
class ThemedButton final : public QPushButton
{
    Q_OBJECT

public:
    enum class Kind {
        primary, ///< filled with the accent
        quiet,   ///< sunken
        plain,   ///< text on the background, secondary ink
    };

    enum class Face { full, symbolOnly };

    ThemedButton(Kind kind, const QString &text, QWidget *parent = nullptr);

    void setSymbol(const QString &name);         ///< before the text
    void setTrailingSymbol(const QString &name); ///< after the text
    void setFaceSymbol(const QString &name);     ///< shown alone, in place of the text, by Face::symbolOnly
    void setFace(Face face);
    Face face() const { return m_face; }

    /// Height of the drawn control in design pixels: 30 when not said otherwise.
    void setDesignHeight(int height);

    /// Shows a turning ring in place of the symbol, at full strength also while disabled. A busy button that
    /// is disabled keeps the focus it has: what is typed next must not go to some other control.
    void setBusy(bool busy);
    bool isBusy() const { return m_isBusy; }

    void setLabel(const QString &text);

    /// Starts its content at the left edge, as the entries of a menu do, in place of the middle.
    void setLeading(bool isLeading);

    /// Ink of text and symbol in place of the kind's own.
    void setInk(Theme::Color ink);

    QSize sizeHint() const override { return sizeFor(m_face); }
    QSize minimumSizeHint() const override;
    QSize sizeFor(Face face) const;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void onThemeChanged();
    void updateTurning();
    void paintContent(QPainter &painter, const QRectF &frame, const QColor &ink) const;
    QColor background() const;
    QColor ink() const;
    int symbolSize() const;
    QString loneSymbol() const;
    bool hasLeadingSymbol() const { return !m_symbol.isEmpty() || (m_isBusy && m_trailingSymbol.isEmpty()); }

    Kind m_kind;
    Face m_face = Face::full;
    QString m_symbol;
    QString m_trailingSymbol;
    QString m_faceSymbol;
    std::optional<Theme::Color> m_ink;
    int m_designHeight = 30;
    bool m_isBusy = false;
    bool m_isLeading = false;
    QTimer m_turning;
    QElapsedTimer m_turningSince;
};
