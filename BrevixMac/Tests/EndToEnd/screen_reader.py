# SPDX-License-Identifier: GPL-3.0-or-later
"""What a screen reader is told about Brevix, and getting about by keyboard as its user would."""
import re

from gi.repository import Gio, GLib

import desktop_driver as desk
import scenario

CHECKED, ENABLED, SHOWING, READ_ONLY = 4, 8, 25, 43
CONTROLS = ("push button", "check box", "radio button", "text", "list", "list item")
# Containers and decoration, which nobody has read out.
UNSPOKEN = ("filler", "layered pane", "scroll bar")


def showing(node):
    """Everything on screen below a node as (role, name, node), in document order. What goes meanwhile is left out."""
    found = []

    def visit(each):
        try:
            if each.role != "application" and not each.has(SHOWING):
                return
            found.append((each.role, each.name, each))
            for child in each.children[:200]:
                visit(child)
        except GLib.Error:
            return
    visit(node)
    return found


def spoken(role, name, node):
    """One line of a dump: the role, the name, and the states that tell one control from another."""
    words = [re.sub(r"Updated \d{1,2}:\d\d( [AP]M)?", "Updated TIME", name)]
    if role in CONTROLS and not node.has(ENABLED):
        words.append("disabled")
    if node.has(CHECKED):
        words.append("checked")
    if node.has(desk.SELECTED):
        words.append("selected")
    if role == "text":
        words.append("multi-line" if node.has(desk.MULTI_LINE) else "single line")
        words.append("editable" if node.has(desk.EDITABLE) else "read-only")
    return f"{role}: " + ", ".join(words)


class ScreenReader(scenario.Scenario):
    def windows(self):
        """Brevix's windows on screen."""
        try:
            root = desk.application(self.brevix.pid)
            return [window for window in (root.children if root else []) if window.has(SHOWING)]
        except GLib.Error:
            return []

    def tree(self, window_name):
        """What a window of Brevix shows; None while it is not there."""
        for window in self.windows():
            if window.name == window_name:
                return showing(window)
        return None

    def dump(self, window_name):
        """The lines that are read out of a window, without the texts of the library."""
        tree = desk.wait_for(f"the window {window_name}", lambda: self.tree(window_name))
        return [spoken(role, name, node) for role, name, node in tree
                if role not in UNSPOKEN and (name or role != "panel") and (role != "list item" or len(name) < 80)]

    def node(self, name, deadline=8, is_field=False):
        """An element on screen by its name; a heading may bear the name of its field."""
        def search():
            for window in self.windows():
                for role, each, node in showing(window):
                    if each == name and (role == "text" or not is_field) and node.extents[2] > 0:
                        return node
            return None
        return desk.wait_for(f"{name!r} in Brevix", search, deadline, 0.05)

    def text_field(self, name):
        return self.node(name, is_field=True)

    def click(self, name, is_field=False):
        self.node(name, is_field=is_field).press()

    def focused_node(self):
        """The control with the focus. The current item of a list calls itself focused too, wherever the focus is, and so
        do the controls of hidden windows."""
        for window in self.windows():
            found = desk.find(window, lambda node: node.has(desk.FOCUSED) and node.has(SHOWING)
                              and node.role != "list item")
            if found is not None:
                return found
        return None

    def focused(self):
        found = self.focused_node()
        return found.name if found else None

    def press_and_wait(self, key):
        """Presses a key that moves the focus; gives where it went. Several controls may have the same name."""
        before = self.focused_node()

        def moved():
            now = self.focused_node()
            return now if now and (before is None or now.path != before.path) else None
        desk.keys(key)
        return desk.wait_for(f"{key} to move the focus from {before.name if before else None!r}", moved, 5, 0.02)

    def tab_to(self, name, presses=40):
        for _ in range(presses):
            if self.focused() == name:
                return
            self.press_and_wait("Tab")
        raise desk.Failure(f"Tab does not lead to {name!r}")

    def tab_order(self, presses=60):
        """The names that Tab leads to from where the focus is, until it is there again."""
        start = desk.wait_for("a focus", self.focused_node, 5, 0.05)
        order = [start.name]
        for _ in range(presses):
            node = self.press_and_wait("Tab")
            if node.path == start.path:
                return order
            order.append(node.name)
        raise desk.Failure(f"Tab does not come back to {start.name!r}: {order}")

    def assert_named(self, tree):
        """Every control says what it is."""
        self.assertEqual([role for role, name, _ in tree if role in CONTROLS and not name], [])


class Announcements:
    """What a screen reader would be told of its own accord."""

    def __init__(self, pid):
        self.heard = []
        bus = desk.accessibility_bus()
        registry = desk.Node("org.a11y.atspi.Registry", "/org/a11y/atspi/registry")
        registry._call("org.a11y.atspi.Registry", "RegisterEvent", GLib.Variant("(s)", ("object:",)))
        self.owner = desk.application(pid).owner
        bus.signal_subscribe(self.owner, "org.a11y.atspi.Event.Object", None, None, None, Gio.DBusSignalFlags.NONE,
                             lambda _bus, owner, path, _interface, signal, details:
                             self.heard.append((signal, details.unpack()[0], owner, path)))

    def poll(self):
        while GLib.MainContext.default().iteration(False):
            pass
        return self.heard

    def named(self, *signals):
        """The names of the elements that these signals came from, oldest first."""
        names = []
        for signal, detail, owner, path in list(self.poll()):
            if signal in signals or f"{signal}:{detail}" in signals:
                try:
                    names.append(desk.Node(owner, path).name)
                except GLib.Error:
                    continue
        return names
