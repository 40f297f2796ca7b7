# SPDX-License-Identifier: GPL-3.0-or-later
"""How long a text of 1,000 characters takes into Mousepad, and what becomes of the clipboard."""
import pathlib
import subprocess
import time

import desktop_driver as desk
import figures
import target_programs
from gi.repository import GLib

# How scripts insert: started as a hotkey of the window manager would.
SCRIPTS = {
    "`xdotool type`": 'exec xdotool type --clearmodifiers --file "$1"',
    "`xdotool type --delay 0`": 'exec xdotool type --clearmodifiers --delay 0 --file "$1"',
    "paste script (xclip, xdotool)": 'xclip -selection clipboard <"$1"; exec xdotool key --clearmodifiers ctrl+v',
    "paste script that puts the text back after 0.2 s":
        'old=$(xclip -selection clipboard -o); xclip -selection clipboard <"$1"; xdotool key --clearmodifiers ctrl+v; '
        'sleep 0.2; printf %s "$old" | xclip -selection clipboard',
}
RUNS = {"`xdotool type`": 3, "`xdotool type --delay 0`": 5}
USUAL_RUNS = 15
CLIPBOARD_CHECKS = 2


class Arrival:
    """Hears from the target itself, over the accessibility bus, how many characters were inserted."""

    def __init__(self):
        bus = desk.accessibility_bus()
        bus.call_sync("org.a11y.atspi.Registry", "/org/a11y/atspi/registry", "org.a11y.atspi.Registry", "RegisterEvent",
                      GLib.Variant("(s)", ("object:text-changed",)), None, 0, 1000)
        bus.signal_subscribe(None, "org.a11y.atspi.Event.Object", "TextChanged", None, None, 0, self.take)
        self.context = GLib.MainContext.default()
        self.source = None
        self.arrived = 0
        self.moment = None

    def take(self, _bus, sender, _path, _interface, _signal, parameters):
        kind, _start, length = parameters.unpack()[:3]
        if sender == self.source and kind.startswith("insert"):
            self.arrived += length
            self.moment = time.monotonic()

    def begin(self, source):
        while self.context.iteration(False):
            pass
        self.source, self.arrived, self.moment = source, 0, None

    def wait_for(self, count, deadline):
        """The moment at which the last of so many characters was there; None when they did not all come."""
        end = time.monotonic() + deadline
        while self.arrived < count and time.monotonic() < end:
            if not self.context.iteration(False):
                time.sleep(0.0002)
        return self.moment if self.arrived >= count else None


class Insertions:
    def __init__(self, stage, text):
        self.stage = stage
        self.text = text
        self.file = pathlib.Path(stage.folder) / "text.txt"
        self.file.write_text(text)
        self.arrival = Arrival()
        self.target = target_programs.Mousepad()
        self.rows = []

    def __enter__(self):
        self.target.open()
        return self

    def __exit__(self, *_):
        self.target.close()

    def measure(self, name, insert):
        """insert() begins an insertion and gives the moment of its beginning and what ends it."""
        values, exact, intact = [], 0, 0
        runs = RUNS.get(name, USUAL_RUNS)
        for run in range(runs):
            self.target.focus()
            self.target.clear()
            owner, content = (None, None) if run >= CLIPBOARD_CHECKS else self.stage.own_rich_clipboard()
            start, finish = insert()
            moment = self.arrival.wait_for(len(self.text), 40)
            finish()
            exact += self.target.read() == self.text
            if moment:
                values.append((moment - start) * 1000)
            if owner:
                intact += self.is_clipboard(content)
                owner.stop()
        self.rows.append((name, figures.Samples.of(values) if values else None, f"{exact} of {runs}",
                          f"{intact} of {min(runs, CLIPBOARD_CHECKS)}"))
        print(f"{name}: {', '.join(map(str, self.rows[-1][1:]))}", flush=True)

    @staticmethod
    def is_clipboard(content):
        try:
            desk.wait_for("the clipboard", lambda: desk.clipboard() == content, 6, 0.1)
            return True
        except desk.Failure:
            return False

    def by_brevix(self, title):
        self.stage.find({"title": title})
        self.arrival.begin(self.target.field.owner)
        return self.stage.display.press("Return"), self.stage.brevix.wait_until_closed

    def by_script(self, script):
        self.arrival.begin(self.target.field.owner)
        start = time.monotonic()
        process = subprocess.Popen(["sh", "-c", script, "sh", str(self.file)], stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        return start, lambda: process.wait(60)

    def table(self):
        lines = ["| way | time until the text is there | text exact | clipboard of several types as before |", "|---" * 4 + "|"]
        lines += [f"| {name} | {samples or 'never all there'} | {exact} | {intact} |" for name, samples, exact, intact in self.rows]
        return "\n".join(lines)
