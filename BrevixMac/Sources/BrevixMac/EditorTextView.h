// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPlainTextEdit>
#include <QTimer>

/// A multi-line text drawn with the theme: what a prompt or a skill is written in, and its preview. Its text
/// is always plain. Stays quick with texts as long as can be saved.
class EditorTextView : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit EditorTextView(QWidget *parent = nullptr);

    /// The text as it is written: every line break one line feed, every other character as it was put in.
    QString content() const;

    /// Shows @p text in place of what is there, as one step that can be undone.
    void replaceContent(const QString &text);

    /// Starts anew with @p text: nothing to be undone.
    void resetContent(const QString &text);

    /// The same as resetContent() for a preview that follows a text: changes only what differs, and keeps its
    /// place.
    void followContent(const QString &text);

    /// Marks the places of `{{variables}}`.
    void setMarksVariables(bool marks) { m_marksVariables = marks; }

    /// Shows the text in secondary ink and a smaller type, as previews are.
    void setPreview(bool isPreview);

    /// Offers files that are pasted or dropped to fileOffered() in place of inserting their names.
    void setAcceptsFiles(bool accepts) { m_acceptsFiles = accepts; }

    /// Heights of the text in design pixels: the one to have, and the least.
    void setDesignHeights(int wanted, int least);

    /// Reports a change now that would be reported soon.
    void report();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The text has changed: at once for short texts, within a frame for long ones.
    void contentEdited();
    void fileOffered(const QString &path);
    /// A text was pasted or dropped that is too long to be edited; the clipboard still has it.
    void insertionRefused();

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;
    bool canInsertFromMimeData(const QMimeData *source) const override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    struct Mark
    {
        int start;
        int end;

        bool operator==(const Mark &) const = default;
    };

    void onThemeChanged();
    void onTextChanged();
    void alignToLanguage();
    QList<Mark> visibleMarks() const;
    void inkMarks(const QList<Mark> &marks);
    void paintMark(QPainter &painter, const Mark &mark) const;

    bool m_marksVariables = false;
    bool m_isPreview = false;
    bool m_acceptsFiles = false;
    int m_wantedHeight = 120;
    int m_leastHeight = 60;
    QTimer m_reporting;
};
