// SPDX-License-Identifier: GPL-3.0-or-later
#include "EditorTextView.h"

#include "EditorModel.h"
#include "PromptTemplateParser.h"
#include "SkillImport.h"
#include "TextDifference.h"
#include "ThemePainting.h"
#include "ThinScrollBar.h"

#include <QMimeData>
#include <QPainter>
#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>
#include <chrono>

namespace {

constexpr int padding = 12;
constexpr int verticalPadding = 9;
constexpr qreal markInset = 2;
constexpr qreal markRadius = 5;
// Longer texts are reported once a frame, not at every key.
constexpr int longText = 8 * 1024;
constexpr std::chrono::milliseconds frame{16};
// How many empty lines are passed over in search of the language.
constexpr int blocksOfLanguage = 20;
// How far a variable may reach out of the visible lines and still be marked.
constexpr int markContext = 2048;

bool isLineBreak(QChar character)
{
    switch (character.unicode()) {
    case 0x2028:
    case 0x2029:
    case 0xfdd0: // frame boundaries of the document
    case 0xfdd1:
        return true;
    default:
        return false;
    }
}

} // namespace

EditorTextView::EditorTextView(QWidget *parent)
    : QPlainTextEdit(parent)
    , m_reporting(this)
{
    setFrameShape(QFrame::NoFrame);
    setContextMenuPolicy(Qt::NoContextMenu);
    setTabChangesFocus(true);
    setVerticalScrollBar(new ThinScrollBar(this));
    // Its room stays, so that nothing moves when there is something to scroll.
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    viewport()->setAutoFillBackground(false);
    m_reporting.setSingleShot(true);
    m_reporting.setInterval(frame);
    m_reporting.setTimerType(Qt::PreciseTimer);
    connect(&m_reporting, &QTimer::timeout, this, &EditorTextView::contentEdited);
    connect(this, &QPlainTextEdit::textChanged, this, &EditorTextView::onTextChanged);
    connect(&Theme::shared(), &Theme::changed, this, &EditorTextView::onThemeChanged);
    onThemeChanged();
}

void EditorTextView::onThemeChanged()
{
    const Theme &theme = Theme::shared();
    setFont(theme.font(m_isPreview ? Theme::Type::preview : Theme::Type::body));
    const QColor ink = theme.color(m_isPreview ? Theme::Color::secondary : Theme::Color::text);
    QPalette colors = palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    colors.setColor(QPalette::Text, ink);
    colors.setColor(QPalette::PlaceholderText, theme.color(Theme::Color::tertiary));
    colors.setColor(QPalette::Highlight, theme.color(Theme::Color::accent));
    colors.setColor(QPalette::HighlightedText, theme.color(Theme::Color::onAccent));
    setPalette(colors);
    document()->setDocumentMargin(0);
    const int side = theme.scaled(padding) + Theme::haloWidth;
    const int vertical = theme.scaled(verticalPadding) + Theme::haloWidth;
    setViewportMargins(side, vertical, Theme::haloWidth, vertical);
    setExtraSelections({});
    updateGeometry();
    viewport()->update();
}

void EditorTextView::setPreview(bool isPreview)
{
    m_isPreview = isPreview;
    setReadOnly(isPreview);
    setUndoRedoEnabled(!isPreview);
    setTextInteractionFlags(isPreview ? Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard
                                      : Qt::TextEditorInteraction);
    setFocusPolicy(Qt::StrongFocus);
    onThemeChanged();
}

void EditorTextView::setDesignHeights(int wanted, int least)
{
    m_wantedHeight = wanted;
    m_leastHeight = least;
    updateGeometry();
}

QSize EditorTextView::sizeHint() const
{
    const Theme &theme = Theme::shared();
    return {theme.scaled(200), theme.scaled(m_wantedHeight) + 2 * Theme::haloWidth};
}

QSize EditorTextView::minimumSizeHint() const
{
    return {80, Theme::shared().scaled(m_leastHeight) + 2 * Theme::haloWidth};
}

// Content

QString EditorTextView::content() const
{
    // Not toPlainText(), which turns no-break spaces into spaces.
    QString text = document()->toRawText();
    std::replace_if(text.begin(), text.end(), isLineBreak, QChar(u'\n'));
    return text;
}

void EditorTextView::replaceContent(const QString &text)
{
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
    cursor.endEditBlock();
    setTextCursor(cursor);
    report();
}

void EditorTextView::resetContent(const QString &text)
{
    setPlainText(text);
    report();
}

void EditorTextView::followContent(const QString &text)
{
    TextDifference::apply(*document(), content(), text);
}

/// The text stands where its language begins. The widget itself would keep to the left.
void EditorTextView::alignToLanguage()
{
    QTextBlock block = document()->begin();
    for (int looked = 0; looked < blocksOfLanguage && block.next().isValid() && block.length() <= 1; ++looked)
        block = block.next();
    const Qt::Alignment alignment = block.textDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    QTextOption option = document()->defaultTextOption();
    if (option.alignment() == alignment)
        return;
    option.setAlignment(alignment);
    document()->setDefaultTextOption(option);
}

void EditorTextView::onTextChanged()
{
    alignToLanguage();
    if (document()->characterCount() < longText) {
        m_reporting.stop();
        Q_EMIT contentEdited();
    } else if (!m_reporting.isActive()) {
        m_reporting.start();
    }
}

void EditorTextView::report()
{
    if (!m_reporting.isActive())
        return;
    m_reporting.stop();
    Q_EMIT contentEdited();
}

// Pasting and dropping

bool EditorTextView::canInsertFromMimeData(const QMimeData *source) const
{
    return source->hasText() || (m_acceptsFiles && SkillImport::localFile(*source));
}

void EditorTextView::insertFromMimeData(const QMimeData *source)
{
    if (m_acceptsFiles) {
        if (const auto path = SkillImport::localFile(*source)) {
            Q_EMIT fileOffered(*path);
            return;
        }
    }
    const QString text = source->text();
    if (!EditorModel::isEditable(text) ||
        document()->characterCount() + text.size() > EditorModel::maximumEditableLength) {
        Q_EMIT insertionRefused();
        return;
    }
    textCursor().insertText(text);
    ensureCursorVisible();
}

bool EditorTextView::event(QEvent *event)
{
    // Left to the window, which shows tips inside itself.
    if (event->type() == QEvent::ToolTip) {
        event->ignore();
        return false;
    }
    return QPlainTextEdit::event(event);
}

// Marks

QList<EditorTextView::Mark> EditorTextView::visibleMarks() const
{
    QTextBlock last = firstVisibleBlock();
    const int begin = std::max(last.position() - markContext, 0);
    const QPointF offset = contentOffset();
    while (last.next().isValid() &&
           blockBoundingGeometry(last).translated(offset).bottom() < viewport()->height())
        last = last.next();
    const int end = std::min(last.position() + last.length() + markContext, document()->characterCount() - 1);
    QTextCursor cursor(document());
    cursor.setPosition(begin);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    const QString text = cursor.selectedText();
    QList<Mark> marks;
    for (const PromptTemplateParser::Placeholder &place : PromptTemplateParser::placeholders(text))
        marks.append(
            {begin + static_cast<int>(place.start), begin + static_cast<int>(place.start + place.length)});
    return marks;
}

/// Gives the variables their ink. Only when something has changed, because setting it repaints.
void EditorTextView::inkMarks(const QList<Mark> &marks)
{
    QList<Mark> inked;
    const QList<QTextEdit::ExtraSelection> present = extraSelections();
    for (const QTextEdit::ExtraSelection &selection : present)
        inked.append({selection.cursor.selectionStart(), selection.cursor.selectionEnd()});
    if (inked == marks)
        return;
    QList<QTextEdit::ExtraSelection> selections;
    for (const Mark &mark : marks) {
        QTextEdit::ExtraSelection selection;
        selection.cursor = QTextCursor(document());
        selection.cursor.setPosition(mark.start);
        selection.cursor.setPosition(mark.end, QTextCursor::KeepAnchor);
        selection.format.setForeground(Theme::shared().color(Theme::Color::accent));
        selections.append(selection);
    }
    setExtraSelections(selections);
}

void EditorTextView::paintEvent(QPaintEvent *event)
{
    if (m_marksVariables) {
        const QList<Mark> marks = visibleMarks();
        inkMarks(marks);
        QPainter painter(viewport());
        for (const Mark &mark : marks)
            paintMark(painter, mark);
    }
    QPlainTextEdit::paintEvent(event);
}

void EditorTextView::paintMark(QPainter &painter, const Mark &mark) const
{
    const QColor soft = Theme::shared().color(Theme::Color::accentSoft);
    QTextBlock block = document()->findBlock(mark.start);
    for (; block.isValid() && block.position() < mark.end; block = block.next()) {
        const QPointF origin = blockBoundingGeometry(block).translated(contentOffset()).topLeft();
        const int from = std::max(mark.start - block.position(), 0);
        const int to = std::min(mark.end - block.position(), block.length() - 1);
        for (int number = 0; number < block.layout()->lineCount(); ++number) {
            const QTextLine line = block.layout()->lineAt(number);
            const int first = std::max(from, line.textStart());
            const int last = std::min(to, line.textStart() + line.textLength());
            if (first >= last)
                continue;
            const qreal one = line.cursorToX(first);
            const qreal other = line.cursorToX(last);
            const QRectF place(std::min(one, other) - markInset, line.y(),
                               std::abs(other - one) + 2 * markInset, line.height());
            ThemePainting::fillRounded(painter, place.translated(origin), markRadius, soft);
        }
    }
}
