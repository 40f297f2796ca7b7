// SPDX-License-Identifier: GPL-3.0-or-later
#include "X11PasteboardContent.h"

#include "X11Connection.h"

#include <algorithm>

namespace {

const QList<QByteArray> textTargets{
    QByteArrayLiteral("UTF8_STRING"), QByteArrayLiteral("text/plain;charset=utf-8"),
    QByteArrayLiteral("text/plain"),  QByteArrayLiteral("STRING"),
    QByteArrayLiteral("TEXT"),
};

const QList<QByteArray> ignoredTargets{
    // The protocol's own.
    QByteArrayLiteral("TARGETS"),
    QByteArrayLiteral("MULTIPLE"),
    QByteArrayLiteral("TIMESTAMP"),
    QByteArrayLiteral("SAVE_TARGETS"),
    // Asking for it changes the owner's document.
    QByteArrayLiteral("DELETE"),
    // Handles and pointers of the owner's process.
    QByteArrayLiteral("GTK_TEXT_BUFFER_CONTENTS"),
    QByteArrayLiteral("PIXMAP"),
    QByteArrayLiteral("BITMAP"),
    QByteArrayLiteral("DRAWABLE"),
    QByteArrayLiteral("COLORMAP"),
};

const QList<QByteArray> ignoredPrefixes{
    QByteArrayLiteral("INSERT_"),
    // With it the office suite pastes whatever its own process holds by then.
    QByteArrayLiteral("application/x-libreoffice-internal-id-"),
};

// Clipboard histories know this convention and leave such content out.
const QByteArray passwordHint = QByteArrayLiteral("x-kde-passwordManagerHint");

xcb_atom_t conventionalType(X11Connection &connection, const QByteArray &target)
{
    if (target == "TEXT" || target == "UTF8_STRING")
        return connection.atom(QByteArrayLiteral("UTF8_STRING"));
    return connection.atom(target);
}

} // namespace

const X11PasteboardEntry *X11PasteboardContent::entry(xcb_atom_t target) const
{
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const X11PasteboardEntry &entry) { return entry.target == target; });
    return found == entries.end() ? nullptr : &*found;
}

qint64 X11PasteboardContent::byteCount() const
{
    qint64 count = 0;
    for (const X11PasteboardEntry &entry : entries)
        count += entry.bytes.size();
    return count;
}

bool X11PasteboardContent::isText(X11Connection &connection, xcb_atom_t target)
{
    return textTargets.contains(connection.atomName(target));
}

bool isKeptTarget(const QByteArray &name)
{
    return !name.isEmpty() && !ignoredTargets.contains(name) &&
           std::none_of(ignoredPrefixes.begin(), ignoredPrefixes.end(),
                        [&](const QByteArray &prefix) { return name.startsWith(prefix); });
}

X11PasteboardContent contentOfText(X11Connection &connection, const QString &text)
{
    connection.internAtoms(textTargets);
    const QByteArray utf8 = text.toUtf8();
    X11PasteboardContent content;
    for (const QByteArray &target : textTargets) {
        content.entries.append({.target = connection.atom(target),
                                .type = conventionalType(connection, target),
                                .format = 8,
                                .bytes = target == "STRING" ? text.toLatin1() : utf8});
    }
    return content;
}

X11PasteboardContent contentOfTransientText(X11Connection &connection, const QString &text)
{
    X11PasteboardContent content = contentOfText(connection, text);
    const xcb_atom_t hint = connection.atom(passwordHint);
    content.entries.append({.target = hint, .type = hint, .format = 8, .bytes = QByteArrayLiteral("secret")});
    return content;
}

QList<PasteboardItem> itemsOfContent(X11Connection &connection, const X11PasteboardContent &content)
{
    PasteboardItem item;
    for (const X11PasteboardEntry &entry : content.entries)
        item.types.append({QString::fromLatin1(connection.atomName(entry.target)), entry.bytes});
    return {item};
}

X11PasteboardContent contentOfItems(X11Connection &connection, const QList<PasteboardItem> &items,
                                    const X11PasteboardContent &known)
{
    X11PasteboardContent content;
    for (const PasteboardItem &item : items) {
        for (const auto &[name, bytes] : item.types) {
            const QByteArray target = name.toLatin1();
            const xcb_atom_t atom = connection.atom(target);
            if (atom == XCB_ATOM_NONE || content.entry(atom))
                continue;
            const X11PasteboardEntry *original = known.entry(atom);
            content.entries.append({.target = atom,
                                    .type = original ? original->type : conventionalType(connection, target),
                                    .format = original ? original->format : quint8(8),
                                    .bytes = bytes});
        }
    }
    return content;
}
