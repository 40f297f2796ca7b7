// SPDX-License-Identifier: GPL-3.0-or-later
#include "DeafField.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace {

class DeafFieldAccessible final : public QAccessibleWidget,
                                  public QAccessibleTextInterface,
                                  public QAccessibleEditableTextInterface
{
public:
    explicit DeafFieldAccessible(DeafField *field)
        : QAccessibleWidget(field, QAccessible::EditableText)
        , m_field(*field)
    {
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::TextInterface)
            return static_cast<QAccessibleTextInterface *>(this);
        if (type == QAccessible::EditableTextInterface)
            return static_cast<QAccessibleEditableTextInterface *>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.editable = true;
        state.multiLine = true;
        return state;
    }

    // The text, as it is

    int characterCount() const override { return int(m_field.toPlainText().size()); }
    int cursorPosition() const override { return m_field.textCursor().position(); }

    QString text(int startOffset, int endOffset) const override
    {
        return m_field.toPlainText().mid(startOffset, endOffset - startOffset);
    }

    void selection(int, int *startOffset, int *endOffset) const override
    {
        *startOffset = m_field.textCursor().selectionStart();
        *endOffset = m_field.textCursor().selectionEnd();
    }

    int selectionCount() const override { return m_field.textCursor().hasSelection() ? 1 : 0; }

    void setCursorPosition(int position) override { setSelection(0, position, position); }
    void addSelection(int startOffset, int endOffset) override { setSelection(0, startOffset, endOffset); }

    void setSelection(int, int startOffset, int endOffset) override
    {
        QTextCursor cursor = m_field.textCursor();
        cursor.setPosition(startOffset);
        cursor.setPosition(endOffset, QTextCursor::KeepAnchor);
        m_field.setTextCursor(cursor);
    }

    void removeSelection(int) override { setCursorPosition(cursorPosition()); }

    QRect characterRect(int) const override { return {}; }
    int offsetAtPoint(const QPoint &) const override { return -1; }
    void scrollToSubstring(int, int) override {}

    QString attributes(int, int *startOffset, int *endOffset) const override
    {
        *startOffset = 0;
        *endOffset = characterCount();
        return {};
    }

    // The pretence

    void deleteText(int, int) override {}
    void insertText(int, const QString &) override {}
    void replaceText(int, int, const QString &) override {}

private:
    DeafField &m_field;
};

QAccessibleInterface *makeAccessible(const QString &, QObject *object)
{
    auto *field = qobject_cast<DeafField *>(object);
    return field ? new DeafFieldAccessible(field) : nullptr;
}

} // namespace

void DeafField::installAccessibility()
{
    QAccessible::installFactory(makeAccessible);
}
