// SPDX-License-Identifier: GPL-3.0-or-later
#include "SearchListKeys.h"

#include "TextField.h"

#include <QKeyEvent>

namespace {

std::optional<PickerList::Move> moveOf(const QKeyEvent &key)
{
    const bool withControl = key.modifiers() == Qt::ControlModifier;
    switch (key.key()) {
    case Qt::Key_Up:
        return PickerList::Move::previous;
    case Qt::Key_Down:
        return PickerList::Move::next;
    case Qt::Key_PageUp:
        return PickerList::Move::pageUp;
    case Qt::Key_PageDown:
        return PickerList::Move::pageDown;
    // Without Control these two move the caret in the search text.
    case Qt::Key_Home:
        return withControl ? std::optional(PickerList::Move::first) : std::nullopt;
    case Qt::Key_End:
        return withControl ? std::optional(PickerList::Move::last) : std::nullopt;
    default:
        return std::nullopt;
    }
}

} // namespace

SearchListKeys::SearchListKeys(TextField &field, PickerList &list, QObject *parent)
    : QObject(parent)
    , m_field(field)
    , m_list(list)
{
    field.installEventFilter(this);
}

bool SearchListKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == &m_field && event->type() == QEvent::KeyPress)
        return handle(*static_cast<QKeyEvent *>(event));
    return false;
}

bool SearchListKeys::handle(const QKeyEvent &key)
{
    if (const auto move = moveOf(key)) {
        m_list.moveSelection(*move);
        return true;
    }
    if (key.key() != Qt::Key_Return && key.key() != Qt::Key_Enter)
        return false;
    if (key.modifiers().testFlag(Qt::ControlModifier))
        Q_EMIT copyRequested();
    else
        Q_EMIT insertRequested();
    return true;
}
