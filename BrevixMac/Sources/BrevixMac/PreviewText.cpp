// SPDX-License-Identifier: GPL-3.0-or-later
#include "PreviewText.h"

#include "PromptTemplateParser.h"
#include "TextDifference.h"
#include "ThemePainting.h"
#include "ThinScrollBar.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int padding = 12;
constexpr int lineHeightPercent = 122;
constexpr int leastHeight = 64;
constexpr qreal markInset = 2;
constexpr qreal markRadius = 5;
constexpr qreal emptyMarkWidth = 3;

QString withLineFeeds(QString text)
{
    return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

} // namespace

PreviewText::PreviewText(QWidget *parent)
    : QTextEdit(parent)
{
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setAcceptRichText(false);
    setFrameShape(QFrame::NoFrame);
    setContextMenuPolicy(Qt::NoContextMenu);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setFocusPolicy(Qt::StrongFocus);
    setTabChangesFocus(true);
    setAccessibleName(QStringLiteral("Preview"));
    setVerticalScrollBar(new ThinScrollBar(this));
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn); // its room is the right padding
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    viewport()->setAutoFillBackground(false);
    connect(document()->documentLayout(), &QAbstractTextDocumentLayout::documentSizeChanged, this,
            &PreviewText::updateGeometry);
    connect(&Theme::shared(), &Theme::changed, this, &PreviewText::onThemeChanged);
    onThemeChanged();
}

void PreviewText::onThemeChanged()
{
    const Theme &theme = Theme::shared();
    setFont(theme.font(Theme::Type::body));
    QPalette colors = palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    colors.setColor(QPalette::Text, theme.color(Theme::Color::text));
    colors.setColor(QPalette::Highlight, theme.color(Theme::Color::accent));
    colors.setColor(QPalette::HighlightedText, theme.color(Theme::Color::onAccent));
    setPalette(colors);
    document()->setDocumentMargin(0);
    const int side = theme.scaled(padding) + Theme::haloWidth;
    const int vertical = theme.scaled(padding - 2) + Theme::haloWidth;
    setViewportMargins(side, vertical, Theme::haloWidth, vertical);
    setExtraSelections({}); // their ink is another one now
    setLineHeight();
    updateGeometry();
}

QList<PreviewText::Span> PreviewText::valueSpans(const QString &text, const VariableValues &values,
                                                 const QString &rendered)
{
    constexpr qsizetype braces = 2;
    QList<Span> spans;
    QString composed;
    qsizetype from = 0;
    for (const PromptTemplateParser::Placeholder &place : PromptTemplateParser::placeholders(text)) {
        const auto value = values.constFind(text.sliced(place.start + braces, place.length - 2 * braces));
        if (value == values.cend())
            continue; // written with spaces inside its braces: stays as it is
        composed += QStringView(text).sliced(from, place.start - from);
        spans.append({.start = composed.size(), .length = value->size()});
        composed += *value;
        from = place.start + place.length;
    }
    composed += QStringView(text).sliced(from);
    return composed == rendered ? spans : QList<Span>();
}

void PreviewText::setPrompt(const PromptItem &prompt, const VariableValues &values)
{
    // A document counts a pair of carriage return and line feed as one character.
    PromptItem shown = prompt;
    shown.text = withLineFeeds(prompt.text);
    VariableValues shownValues;
    for (auto entry = values.keyValueBegin(); entry != values.keyValueEnd(); ++entry)
        shownValues.insert(withLineFeeds(entry->first), withLineFeeds(entry->second));
    const QString rendered = PromptTemplateParser::render(shown, shownValues).text;
    m_spans = valueSpans(shown.text, shownValues, rendered);
    follow(rendered);
    if (std::exchange(m_promptID, prompt.id) != prompt.id)
        verticalScrollBar()->setValue(0);
    viewport()->update();
}

/// Shows the beginning of @p text, changing only what differs.
void PreviewText::follow(const QString &text)
{
    QString shown = text;
    if (shown.size() > longestShown) {
        shown.truncate(shown[longestShown - 1].isHighSurrogate() ? longestShown - 1 : longestShown);
        const qsizetype end = shown.size();
        erase_if(m_spans, [end](const Span &span) { return span.start + span.length > end; });
        shown += u'\u2026';
    }
    TextDifference::apply(*document(), m_shown, shown);
    m_shown = shown;
}

void PreviewText::setLineHeight()
{
    QTextCursor cursor(document());
    cursor.select(QTextCursor::Document);
    QTextBlockFormat lines; // which new lines inherit
    lines.setLineHeight(lineHeightPercent, QTextBlockFormat::ProportionalHeight);
    cursor.mergeBlockFormat(lines);
}

QSize PreviewText::sizeHint() const
{
    const QMargins margins = viewportMargins();
    const int height = static_cast<int>(std::ceil(document()->size().height()));
    return {Theme::panelWidth, height + margins.top() + margins.bottom()};
}

QSize PreviewText::minimumSizeHint() const
{
    return {0, std::min(Theme::shared().scaled(leastHeight), sizeHint().height())};
}

QList<PreviewText::Span> PreviewText::visibleSpans() const
{
    const QTextBlock first = cursorForPosition({0, 0}).block();
    const QTextBlock last = cursorForPosition(QPoint(0, viewport()->height())).block();
    const qsizetype begin = first.position();
    const qsizetype end = last.position() + last.length();
    const auto from = std::partition_point(m_spans.begin(), m_spans.end(), [begin](const Span &span) {
        return span.start + span.length < begin;
    });
    const auto to =
        std::partition_point(from, m_spans.end(), [end](const Span &span) { return span.start < end; });
    return {from, to};
}

/// Gives the values their ink. Only when something has changed, because setting it repaints.
void PreviewText::inkSpans(const QList<Span> &spans)
{
    QList<Span> inked;
    const QList<ExtraSelection> present = extraSelections();
    for (const ExtraSelection &selection : present)
        inked.append({.start = selection.cursor.selectionStart(),
                      .length = selection.cursor.selectionEnd() - selection.cursor.selectionStart()});
    if (inked == spans)
        return;
    QList<ExtraSelection> selections;
    for (const Span &span : spans) {
        ExtraSelection selection;
        selection.cursor = QTextCursor(document());
        selection.cursor.setPosition(static_cast<int>(span.start));
        selection.cursor.setPosition(static_cast<int>(span.start + span.length), QTextCursor::KeepAnchor);
        selection.format.setForeground(Theme::shared().color(Theme::Color::accent));
        selections.append(selection);
    }
    setExtraSelections(selections);
}

void PreviewText::paintEvent(QPaintEvent *event)
{
    const QList<Span> spans = visibleSpans();
    inkSpans(spans);
    {
        QPainter painter(viewport());
        painter.translate(0, -verticalScrollBar()->value());
        for (const Span &span : spans)
            paintMark(painter, span);
    }
    QTextEdit::paintEvent(event);
}

void PreviewText::paintMark(QPainter &painter, const Span &span) const
{
    const QColor soft = Theme::shared().color(Theme::Color::accentSoft);
    const int end = static_cast<int>(span.start + span.length);
    const qreal inset = span.length > 0 ? markInset : 0;
    QTextBlock block = document()->findBlock(static_cast<int>(span.start));
    for (; block.isValid() && block.position() <= end; block = block.next()) {
        const QPointF origin = document()->documentLayout()->blockBoundingRect(block).topLeft();
        const int from = std::max(static_cast<int>(span.start) - block.position(), 0);
        const int to = std::min(end - block.position(), block.length() - 1);
        for (int number = 0; number < block.layout()->lineCount(); ++number) {
            const QTextLine line = block.layout()->lineAt(number);
            const int lineEnd = line.textStart() + line.textLength();
            if (to < line.textStart() || from > lineEnd ||
                (from == lineEnd && number + 1 < block.layout()->lineCount()))
                continue;
            const qreal left = line.cursorToX(std::max(from, line.textStart()));
            const qreal right = line.cursorToX(std::min(to, lineEnd));
            const qreal width = std::max(std::abs(right - left), span.length > 0 ? 0 : emptyMarkWidth);
            const QRectF mark(std::min(left, right) - inset, line.y(), width + 2 * inset,
                              line.ascent() + line.descent());
            ThemePainting::fillRounded(painter, mark.translated(origin), span.length > 0 ? markRadius : 1.5,
                                       soft);
        }
    }
}
