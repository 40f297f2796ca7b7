// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/Pasteboard.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <xcb/xcb.h>

#include <optional>

class X11Connection;

/// One target of a selection exactly as its owner delivered it.
struct X11PasteboardEntry
{
    xcb_atom_t target = XCB_ATOM_NONE;
    xcb_atom_t type = XCB_ATOM_NONE;
    quint8 format = 8; ///< bits of one unit: 8, 16 or 32
    QByteArray bytes;

    bool operator==(const X11PasteboardEntry &) const = default;
};

/// What a selection holds: every target in the owner's order, each once. A value.
struct X11PasteboardContent
{
    QList<X11PasteboardEntry> entries;

    bool isEmpty() const { return entries.isEmpty(); }
    const X11PasteboardEntry *entry(xcb_atom_t target) const;
    qint64 byteCount() const;
    /// Whether @p target is one of the plain-text targets that contentOfText() makes.
    static bool isText(X11Connection &connection, xcb_atom_t target);

    bool operator==(const X11PasteboardContent &) const = default;
};

/// Whether a target is worth keeping: neither part of the protocol, nor a side effect on its owner, nor a
/// handle that means something only while its owner lives.
bool isKeptTarget(const QByteArray &name);

/// @p text in every plain-text target that applications ask for.
X11PasteboardContent contentOfText(X11Connection &connection, const QString &text);

/// The same, marked so that clipboard histories skip it.
X11PasteboardContent contentOfTransientText(X11Connection &connection, const QString &text);

/// @p content as the one item that an X11 clipboard has; it may be without types.
QList<PasteboardItem> itemsOfContent(X11Connection &connection, const X11PasteboardContent &content);

/// The reverse. Items know no format: it is taken from @p known where that has the same target, else from the
/// conventions of the target. X11 knows one item: of several, the first that has a type gives it.
X11PasteboardContent contentOfItems(X11Connection &connection, const QList<PasteboardItem> &items,
                                    const X11PasteboardContent &known);
