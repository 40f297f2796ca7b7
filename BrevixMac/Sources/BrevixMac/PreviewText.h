// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models.h"

#include <QTextEdit>

/// A read-only, selectable preview of a rendered prompt with its filled-in values marked. Its text is exactly
/// what will be inserted, or the beginning of it with an ellipsis where that is very long; the marks are
/// drawn, never part of it. Follows every keystroke in little time: only what differs is laid out again.
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

    /// The longest beginning that is shown, in UTF-16 units: laying out more would hold up the main thread.
    static constexpr qsizetype longestShown = 128LL * 1024;

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
    void setLineHeight();
    void follow(const QString &text);
    QList<Span> visibleSpans() const;
    void inkSpans(const QList<Span> &spans);
    void paintMark(QPainter &painter, const Span &span) const;

    QString m_promptID;
    QString m_shown;
    QList<Span> m_spans; ///< in the order of the text
};
