// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

/// The session's global hotkeys: at most one at a time. Main thread only.
class HotKeys : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Takes the key number @p keyCode (the layout-independent ANSI key table) with exactly @p modifiers
    /// (Shift 0x20000, Control 0x40000, Option 0x80000, Command 0x100000), whatever the lock keys are.
    /// Replaces an earlier one. False when somebody else holds the combination or the session has no such
    /// facility.
    virtual bool registerHotKey(quint32 keyCode, quint64 modifiers) = 0;

    virtual void unregisterHotKey() = 0;

    /// Whether the session lets an application have hotkeys at all.
    virtual bool isAvailable() const { return true; }

Q_SIGNALS:
    void pressed();

    /// The registered combination can no longer be had: the keyboard has changed, and somebody else holds
    /// what it is now. It stays registered and is taken again with the next change that allows it.
    void lost();
    /// After lost(): it works again.
    void regained();
};
