#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Owns a selection with the types given as NAME=TYPE:FORMAT:FILE, through GTK; large ones go in increments.

Prints "owning", then one line for each type that is read; ends when somebody else takes the selection.
"""
import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402


def main():
    selection = Gdk.Atom.intern(sys.argv[1], False)
    content = []
    for argument in sys.argv[2:]:
        name, rest = argument.split("=", 1)
        kind, form, path = rest.split("|", 2)
        with open(path, "rb") as file:
            content.append((name, Gdk.Atom.intern(kind, False), int(form), file.read()))

    window = Gtk.Invisible()

    def on_get(_widget, data, info, _time):
        name, kind, form, payload = content[info]
        data.set(kind, form, payload)
        print("read", name, flush=True)

    window.connect("selection-get", on_get)
    window.connect("selection-clear-event", lambda *_: Gtk.main_quit())
    for index, (name, *_rest) in enumerate(content):
        Gtk.selection_add_target(window, selection, Gdk.Atom.intern(name, False), index)
    window.realize()
    if not Gtk.selection_owner_set(window, selection, 0):
        sys.exit("refused")
    print("owning", flush=True)
    Gtk.main()


main()
