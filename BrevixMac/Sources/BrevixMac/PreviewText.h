// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models.h"

#include <QTextEdit>

/// A read-only, selectable preview of a rendered prompt with its filled-in values marked. Its text is exactly
/// what will be inserted; the marks are drawn, never part of it.
class PreviewText final : public QTextEdit
{
    Q_OBJECT

public:
    /// Where a value stands in the rendered text, in UTF-16 units.
    struct Span
    {
        qsizetype start = 0;
        qsizetype length = 0;

        bool operator==(const Span &) const = default;
    };

    explicit PreviewText(QWidget *parent = nullptr);

    void setPrompt(const PromptItem &prompt, const VariableValues &values);

    /// The places of the values in @p rendered; none when values themselves hold placeholders, because then a
    /// place has no single origin.
    static QList<Span> valueSpans(const QString &text, const VariableValues &values, const QString &rendered);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void onThemeChanged();
    void format();
    void paintMark(QPainter &painter, const Span &span) const;

    QList<Span> m_spans;
};
