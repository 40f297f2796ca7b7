# SPDX-License-Identifier: GPL-3.0-or-later
"""Figures of the running program on a virtual desktop: start, picker, insertion, memory, wake-ups.

usage: desktop_benchmark.py BREVIX DESKTOP_LATENCY
"""
import ctypes
import pathlib
import statistics
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "Tests/EndToEnd"))
import desktop_driver as desk  # noqa: E402
from gi.repository import GLib  # noqa: E402

RETURN_KEY = 36


class Keys:
    """Key presses without the start of another program in the measured time."""

    def __init__(self):
        self.x11 = ctypes.CDLL("libX11.so.6")
        self.xtst = ctypes.CDLL("libXtst.so.6")
        self.x11.XOpenDisplay.restype = ctypes.c_void_p
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(None))

    def press(self, code):
        for down in (1, 0):
            self.xtst.XTestFakeKeyEvent(self.display, code, down, 0)
        self.x11.XFlush(self.display)


def report(what, milliseconds):
    values = sorted(milliseconds)
    high = values[min(len(values) - 1, int(0.95 * len(values)))]
    print(f"{what:<44} median {statistics.median(values):6.1f} ms   95 % {high:6.1f} ms   ({len(values)} runs)",
          flush=True)


class InsertionWatch:
    """Sees a target's own announcement that text was inserted, straight from the accessibility bus."""

    def __init__(self):
        self.arrived = []
        bus = desk.accessibility_bus()
        bus.call_sync("org.a11y.atspi.Registry", "/org/a11y/atspi/registry", "org.a11y.atspi.Registry",
                      "RegisterEvent", GLib.Variant("(s)", ("object:text-changed",)), None, 0, 1000)
        bus.signal_subscribe(None, "org.a11y.atspi.Event.Object", "TextChanged", None, None, 0,
                             lambda *_: self.arrived.append(time.monotonic()))
        self.context = GLib.MainContext.default()

    def time_after_return(self, keys):
        """Milliseconds from Return to the announcement."""
        while self.context.iteration(False):
            pass
        self.arrived.clear()
        start = time.monotonic()
        keys.press(RETURN_KEY)
        while not self.arrived and time.monotonic() - start < 5:
            if not self.context.iteration(False):
                time.sleep(0.0002)
        if not self.arrived:
            raise desk.Failure("no text arrived")
        return (self.arrived[0] - start) * 1000


def open_editor():
    editor = desk.Program("mousepad", "--disable-server", env=desk.without_memory())
    window = desk.wait_for_window("mousepad")
    desk.activate(window)
    desk.click_into(window)
    return editor, window


def measure_insertion(brevix, runs, what):
    editor, window = open_editor()
    desk.field(editor.pid)
    keys, watch = Keys(), InsertionWatch()
    values = []
    for _ in range(runs):
        brevix.press_hotkey()
        desk.type_text("proof")
        time.sleep(0.3)
        values.append(watch.time_after_return(keys))
        brevix.wait_until_closed()
        desk.wait_for("the focus to be back", lambda: desk.active_window() == window)
        time.sleep(0.5)
    report(what, values)
    editor.stop()


def rollup(pid):
    text = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()
    return {line.split(":")[0]: int(line.split()[1]) for line in text.splitlines()[1:]}


def switches(pid):
    """Voluntary context switches of each thread: how often it was woken."""
    counts = {}
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        for line in (task / "status").read_text().splitlines():
            if line.startswith("voluntary_ctxt_switches"):
                counts[task.name] = int(line.split()[1])
    return counts


def measure_idle(brevix, seconds):
    time.sleep(10)
    before = switches(brevix.pid)
    time.sleep(seconds)
    woken = sum(count - before.get(thread, 0) for thread, count in switches(brevix.pid).items())
    memory = rollup(brevix.pid)
    print(f"{'idle memory':<44} PSS {memory['Pss'] / 1024:.1f} MiB   private dirty "
          f"{memory['Private_Dirty'] / 1024:.1f} MiB   RSS {memory['Rss'] / 1024:.1f} MiB")
    print(f"{'idle wake-ups of all threads':<44} {woken} in {seconds} s", flush=True)


def main():
    binary, latency = sys.argv[1:3]
    desk.Brevix.write_defaults()
    subprocess.run([latency, "start", binary, "15"], check=True)
    brevix = desk.Brevix(binary)
    brevix.wait_until_ready()
    try:
        measure_idle(brevix, int(sys.argv[3]) if len(sys.argv) > 3 else 90)
        editor, _ = open_editor()
        subprocess.run([latency, "shown", "brevix", "33", "60"], check=True)
        editor.stop()
        measure_insertion(brevix, 20, "Return to text in the field, direct")
        brevix.stop()
        desk.Brevix.write_defaults(preferredInsertionMethod=b'"clipboardPaste"')
        brevix = desk.Brevix(binary, first_start=True)
        brevix.wait_until_ready()
        measure_insertion(brevix, 12, "Return to text in the field, paste")
    finally:
        brevix.stop()


if __name__ == "__main__":
    main()
