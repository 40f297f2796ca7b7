// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Desktop/RunningApplication.h"
#include "X11Connection.h"

#include <QList>
#include <QSet>

#include <optional>

/// The keyboard as it is at the moment of construction: which key gives which symbol, in which group (layout)
/// the user types, which keys are modifiers and which are down. A value; some round trips to make.
class X11Keyboard
{
public:
    explicit X11Keyboard(X11Connection &connection);

    /// From now on a held key comes to @p connection as presses alone, so that a release means that the key
    /// is up. Gives the number of the keyboard extension's events, 0 without that extension.
    static quint8 tellRepeatsApart(X11Connection &connection);

    /// The key that gives the unshifted @p keysym to the application in front: in the active group, else in
    /// another group, if the active one gives no letter of the same script on that key (applications then
    /// look at the others, as for the shortcuts of a Cyrillic layout beside a Latin one).
    std::optional<xcb_keycode_t> shortcutKey(xcb_keysym_t keysym) const;
    /// The key that gives the unshifted @p keysym in any group.
    std::optional<xcb_keycode_t> key(xcb_keysym_t keysym) const;
    /// The first key of modifier @p modifier, an xcb_map_index_t.
    std::optional<xcb_keycode_t> modifierKey(int modifier) const;

    /// The keys that paste, in the order of pressing; none where the keyboard cannot.
    QList<xcb_keycode_t> pasteChord(PasteConvention convention) const;

    bool isDown(xcb_keycode_t key) const;
    /// Whether a modifier is down that would change the meaning of a chord; the locks do not count.
    bool isModifierHeld() const;

private:
    struct Key
    {
        xcb_keycode_t code = 0;
        QList<xcb_keysym_t> unshifted; ///< by group
    };

    void readKeys(X11Connection &connection);
    void readModifiers(X11Connection &connection);
    xcb_keysym_t symbol(const Key &key, int group) const;

    QList<Key> m_keys;
    int m_activeGroup = 0;
    QList<QList<xcb_keycode_t>> m_modifiers; ///< by xcb_map_index_t
    QSet<xcb_keycode_t> m_down;
};
