// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <optional>

class X11Connection;

/// Which bits of an X event's state the keyboard's modifiers have at present.
struct X11Modifiers
{
    quint16 shift = 0;
    quint16 control = 0;
    quint16 option = 0;  ///< the Alt keys; 0 when the keyboard has none
    quint16 command = 0; ///< the Super keys, else the Meta keys; 0 when the keyboard has neither
    quint16 capsLock = 0;
    quint16 numLock = 0;
    quint16 scrollLock = 0;

    /// Read from the server's modifier map; a few round trips.
    static X11Modifiers read(X11Connection &connection);

    quint16 all() const { return shift | control | option | command; }

    /// State bits of the modifier bits @p modifiers (Shift 0x20000, Control 0x40000, Option 0x80000, Command
    /// 0x100000); nothing when the keyboard lacks one of them.
    std::optional<quint16> mask(quint64 modifiers) const;

    /// The other way round: the modifier bits of an event's state.
    quint64 flags(quint16 state) const;
};
