// SPDX-License-Identifier: GPL-3.0-or-later
#include "PreviewText.h"

#include "PromptTemplateParser.h"
#include "ThemePainting.h"
#include "ThinScrollBar.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace {

constexpr int padding = 12;
constexpr int lineHeightPercent = 122;
constexpr int leastHeight = 64;
constexpr qreal markInset = 2;
constexpr qreal markRadius = 5;
constexpr qreal emptyMarkWidth = 3;

// The next placeholder at or after @p from that has an entry among @p values.
std::optional<std::pair<qsizetype, QString>> nextPlaceholder(const QString &text, qsizetype from,
                                                             const VariableValues &values)
{
    std::optional<std::pair<qsizetype, QString>> found;
    for (auto entry = values.keyValueBegin(); entry != values.keyValueEnd(); ++entry) {
        const qsizetype position = text.indexOf(u"{{" + entry->first + u"}}", from);
        if (position >= 0 && (!found || position < found->first))
            found = {position, entry->first};
    }
    return found;
}

QString withLineFeeds(QString text)
{
    return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

} // namespace

PreviewText::PreviewText(QWidget *parent)
    : QTextEdit(parent)
{
    setReadOnly(true);
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
    format();
}

QList<PreviewText::Span> PreviewText::valueSpans(const QString &text, const VariableValues &values,
                                                 const QString &rendered)
{
    QList<Span> spans;
    QString composed;
    qsizetype from = 0;
    while (const auto next = nextPlaceholder(text, from, values)) {
        const auto &[position, name] = *next;
        composed += QStringView(text).mid(from, position - from);
        spans.append({.start = composed.size(), .length = values.value(name).size()});
        composed += values.value(name);
        from = position + name.size() + 4;
    }
    composed += QStringView(text).mid(from);
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
    const int scrolled = verticalScrollBar()->value();
    setPlainText(rendered);
    format();
    verticalScrollBar()->setValue(scrolled);
}

void PreviewText::format()
{
    QTextCursor cursor(document());
    cursor.select(QTextCursor::Document);
    QTextBlockFormat lines;
    lines.setLineHeight(lineHeightPercent, QTextBlockFormat::ProportionalHeight);
    cursor.mergeBlockFormat(lines);
    QTextCharFormat plain;
    plain.setFont(font());
    plain.setForeground(palette().color(QPalette::Text));
    cursor.setCharFormat(plain);
    QTextCharFormat value;
    value.setForeground(Theme::shared().color(Theme::Color::accent));
    for (const Span &span : std::as_const(m_spans)) {
        cursor.setPosition(static_cast<int>(span.start));
        cursor.setPosition(static_cast<int>(span.start + span.length), QTextCursor::KeepAnchor);
        cursor.mergeCharFormat(value);
    }
    updateGeometry();
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

void PreviewText::paintEvent(QPaintEvent *event)
{
    {
        QPainter painter(viewport());
        painter.translate(0, -verticalScrollBar()->value());
        for (const Span &span : std::as_const(m_spans))
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
