#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Reads a text field of another program by libatspi, as a witness that shares no code with the product.

read-field.py PID [ROLE]: prints JSON about the first text object of that process (of that role).
"""
import json
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi

TEXT_ROLES = {"text", "entry", "password text", "paragraph", "terminal", "section"}


def fields(node, role):
    if node is None:
        return
    wanted = node.get_role_name() == role if role else node.get_role_name() in TEXT_ROLES
    if wanted and "Text" in node.get_interfaces():
        yield node
    for i in range(node.get_child_count()):
        yield from fields(node.get_child_at_index(i), role)


def main():
    pid = int(sys.argv[1])
    role = sys.argv[2] if len(sys.argv) > 2 else None
    Atspi.init()
    Atspi.set_timeout(2000, 2000)
    desktop = Atspi.get_desktop(0)
    found = []
    for i in range(desktop.get_child_count()):
        program = desktop.get_child_at_index(i)
        if program is not None and program.get_process_id() == pid:
            found += list(fields(program, role))
    focused = [f for f in found if f.get_state_set().contains(Atspi.StateType.FOCUSED)]
    field = (focused or found or [None])[0]
    if field is None:
        print("{}")
        return
    count = Atspi.Text.get_character_count(field)
    print(json.dumps({
        "role": field.get_role_name(),
        "text": Atspi.Text.get_text(field, 0, count),
        "caret": Atspi.Text.get_caret_offset(field),
        "isFocused": field in focused,
    }))


main()
