# SPDX-License-Identifier: GPL-3.0-or-later
"""From a hotkey to a window with 500 entries, and the memory it costs: Brevix, rofi and CopyQ."""
import os
import pathlib
import subprocess
import time

import desktop_driver as desk
import figures

ENTRIES = 500
RUNS = 40
SETTLING = 8

HOTKEYS = {"brevix": 33, "rofi": 27, "copyq": 54}   # the keys P, R and C, pressed with Super and Shift


def bind_rofi(entries):
    """A hotkey of the window manager starts rofi, as its users do."""
    settings = pathlib.Path("/etc/xdg/openbox/rc.xml").read_text()
    binding = ('<keybind key="W-S-r"><action name="Execute">'
               f'<command>rofi -dmenu -i -input {entries}</command></action></keybind>')
    own = pathlib.Path(os.environ["HOME"]) / ".config/openbox/rc.xml"
    own.parent.mkdir(parents=True, exist_ok=True)
    own.write_text(settings.replace("</keyboard>", binding + "</keyboard>"))
    subprocess.run(["openbox", "--reconfigure"], check=True)


def start_copyq(entries):
    """CopyQ as a user has it who keeps the list in it and shows its window by a global shortcut."""
    folder = pathlib.Path(os.environ["HOME"]) / ".config/copyq"
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "copyq.conf").write_text(f"[Options]\nmaxitems={ENTRIES}\n")
    (folder / "copyq-commands.ini").write_text(
        '[Commands]\n1\\Command="copyq: toggle()"\n1\\GlobalShortcut=meta+shift+c\n1\\IsGlobalShortcut=true\n'
        "1\\Name=Show\nsize=1\n")
    program = desk.Program("copyq", stderr=subprocess.DEVNULL)
    desk.wait_for("CopyQ", lambda: desk.output("copyq", "size").strip() == b"0", 20, 0.2)
    fill = "l = str(input()).split(String.fromCharCode(10)); l.reverse(); l.forEach(function(each) { add(each) })"
    subprocess.run(["copyq", "eval", fill], input=entries.read_bytes(), check=True, stdout=subprocess.DEVNULL)
    desk.wait_for("CopyQ's entries", lambda: int(desk.output("copyq", "size")) >= ENTRIES - 1, 20, 0.2)
    return program


def idle_memory(pid):
    time.sleep(SETTLING)
    return figures.proportional_memory(figures.descendants(pid))


def memory_with_window(name, pid):
    desk.wait_for(f"the window of {name}", lambda: desk.windows(name), 10)
    time.sleep(1)
    return figures.proportional_memory(figures.descendants(pid))


class Row:
    """What was measured of one program."""

    def __init__(self, idle=0.0):
        self.idle = idle
        self.open = 0.0
        self.painted = self.quiet = None

    def measure(self, name):
        self.painted, self.quiet = figures.latency("shown", name, HOTKEYS[name], RUNS)


def measure_brevix(brevix):
    row = Row(idle_memory(brevix.pid))
    row.measure("brevix")
    brevix.press_hotkey()
    time.sleep(1)
    row.open = figures.proportional_memory([brevix.pid])
    desk.keys("Escape")
    brevix.wait_until_closed()
    return row


def measure_rofi(entries):
    bind_rofi(entries)
    row = Row()
    row.measure("rofi")
    rofi = desk.Program("rofi", "-dmenu", "-i", "-input", str(entries))
    try:
        row.open = memory_with_window("rofi", rofi.pid)
    finally:
        rofi.stop()
    return row


def measure_copyq(entries):
    copyq = start_copyq(entries)
    try:
        row = Row(idle_memory(copyq.pid))
        row.measure("copyq")
        row.open = figures.proportional_memory(figures.descendants(copyq.pid))
        return row
    finally:
        copyq.stop()


def table(brevix, rofi, copyq):
    lines = [f"| {ENTRIES} entries | Brevix | rofi {figures.version('rofi')} | CopyQ {figures.version('copyq')} |", "|---" * 4 + "|"]

    def add(what, value):
        lines.append(f"| {what} | {value(brevix)} | {value(rofi)} | {value(copyq)} |")
    add("hotkey to the window mapped and first painted", lambda row: row.painted)
    add("hotkey to the window painted and quiet", lambda row: row.quiet)
    add("memory while nothing is asked of it (PSS)", lambda row: f"{row.idle:.1f} MiB" if row.idle else "not running")
    add("memory after that, or with the window open (PSS)", lambda row: f"{row.open:.1f} MiB")
    return "\n".join(lines)
