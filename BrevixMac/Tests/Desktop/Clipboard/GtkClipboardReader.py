#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Prints what a selection holds, read through GTK: one line per type with its X type, format, size and SHA-256."""
import hashlib
import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402

PROTOCOL = {"TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS"}


def main():
    clipboard = Gtk.Clipboard.get(Gdk.Atom.intern(sys.argv[1], False))
    found, targets = clipboard.wait_for_targets()
    for target in targets if found else []:
        if target.name() in PROTOCOL:
            continue
        data = clipboard.wait_for_contents(target)
        if data is None:
            print(target.name(), "refused")
            continue
        payload = data.get_data() or b""
        digest = hashlib.sha256(payload).hexdigest()
        print(target.name(), data.get_data_type().name(), data.get_format(), len(payload), digest)


main()
