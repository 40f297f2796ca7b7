# SPDX-License-Identifier: GPL-3.0-or-later
"""Brevix beside neighbouring tools on the same desktop.

usage: side_by_side.py RANKING_BENCHMARK RUNS     (on a virtual desktop)
"""
import os
import pathlib
import re
import statistics
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "EndToEnd"))
import desktop_driver as desk  # noqa: E402
import seeded_library  # noqa: E402
import target_programs as programs  # noqa: E402
import x_display  # noqa: E402
from seeded_library import TEXTS  # noqa: E402
from target_matrix import METHODS, Stage  # noqa: E402

TEXT = TEXTS["zulusix"]


def report(what, values, unit="ms"):
    ordered = sorted(values)
    print(f"{what:<58} median {statistics.median(ordered):7.1f} {unit}   95 % {ordered[int(0.95 * (len(ordered) - 1))]:7.1f}"
          f" {unit}   ({len(ordered)})", flush=True)


def memory_of(pids):
    """Proportional set size in MiB."""
    total = 0
    for pid in pids:
        text = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()
        total += int(re.search(r"^Pss:\s+(\d+)", text, re.M).group(1))
    return total / 1024


class Desk:
    """One editor as the target, and ways to see what happens to it."""

    def __init__(self):
        self.display = x_display.Display()
        self.editor = programs.Mousepad()
        self.editor.open()

    def time_insertion(self, insert):
        """Milliseconds from the moment that insert() gives until the text is in the editor."""
        self.editor.focus()
        self.editor.clear()
        start = insert()
        return (self.editor.when_seen(TEXT, 30) - start) * 1000


def by_xdotool():
    start = time.monotonic()
    subprocess.run(["xdotool", "type", "--clearmodifiers", "--delay", "1", TEXT], check=True)
    return start


def by_script():
    """What a plain paste script does; nothing is given back."""
    start = time.monotonic()
    subprocess.run(["xclip", "-selection", "clipboard"], input=TEXT.encode(), check=True, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL)
    subprocess.run(["xdotool", "key", "--clearmodifiers", "ctrl+v"], check=True)
    return start


def measure_insertion(runs):
    table = Desk()
    for name, preference in METHODS.items():
        Stage.defaults = {"preferredInsertionMethod": preference}
        Stage.start_brevix()

        def by_brevix():
            stage = Stage()
            stage.find({"title": "zulusix"})
            return table.display.press("Return")
        values = []
        for _ in range(runs):
            values.append(table.time_insertion(by_brevix))
            Stage.brevix.wait_until_closed(10)
            desk.wait_for("the restore", lambda: "x-kde-passwordManagerHint" not in desk.clipboard_types(), 15)
        report(f"1,000 characters into mousepad, Brevix, {name}", values)
        if name == "direct":
            print(f"{'memory of Brevix with its library and embedded cloud':<58} PSS {memory_of([Stage.brevix.pid]):.1f} MiB",
                  flush=True)
        Stage.tearDownClass()
    report("1,000 characters into mousepad, xclip and xdotool key", [table.time_insertion(by_script) for _ in range(runs)])
    damaged = 0
    values = []
    for _ in range(runs):
        try:
            values.append(table.time_insertion(by_xdotool))
        except desk.Failure:
            damaged += 1
    if values:
        report("1,000 characters into mousepad, xdotool type", values)
    print(f"{'  of which with wrong text':<58} {damaged} of {runs}", flush=True)
    table.editor.close()


def time_to_window(press, wm_class, close, runs):
    """Milliseconds from a key or command to a visible window, seen by asking the X server without pause."""
    values = []
    for _ in range(runs):
        desk.wait_for("no window", lambda: not desk.windows(wm_class))
        start = press()
        desk.wait_for("the window", lambda: desk.windows(wm_class), 10, 0.001)
        values.append((time.monotonic() - start) * 1000)
        close()
    return values


def measure_windows(runs):
    display = x_display.Display()
    Stage.defaults = {}
    Stage.start_brevix()

    def press_hotkey():
        for name in ("Super_L", "Shift_L"):
            display.set_key(name, True)
        start = display.press("p")
        for name in ("Shift_L", "Super_L"):
            display.set_key(name, False)
        return start
    report("key to window, Brevix", time_to_window(press_hotkey, desk.PANEL_CLASS, lambda: desk.keys("Escape"), runs))
    Stage.tearDownClass()
    lines = "\n".join(f"entry {number} of the list" for number in range(500))

    def start_rofi():
        start = time.monotonic()
        rofi.append(subprocess.Popen(["rofi", "-dmenu"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                                     stderr=subprocess.DEVNULL))
        rofi[-1].stdin.write(lines.encode())
        rofi[-1].stdin.close()
        return start

    def close_rofi():
        memory.append(memory_of([rofi[-1].pid]))
        rofi[-1].terminate()
        rofi[-1].wait()
    rofi, memory = [], []
    report("command to window, rofi with 500 lines", time_to_window(start_rofi, "rofi", close_rofi, runs))
    report("memory of rofi while it is open", memory, "MiB")
    copyq = desk.Program("copyq", stderr=subprocess.DEVNULL)
    desk.wait_for("copyq", lambda: desk.output("copyq", "size"), 20, 0.2)

    def toggle():
        start = time.monotonic()
        subprocess.run(["copyq", "toggle"], check=True, stdout=subprocess.DEVNULL)
        return start
    report("command to window, copyq toggle", time_to_window(toggle, "copyq", toggle, runs))
    servers = [int(pid) for pid in desk.output("pgrep", "-g", str(os.getpgid(copyq.pid))).split()]
    print(f"{'memory of copyq, idle':<58} PSS {memory_of(servers):.1f} MiB ({len(servers)} processes)", flush=True)
    copyq.stop()


def measure_filtering(ranking, runs):
    """10,000 entries of about 2 KiB, one query."""
    words = [f"entry {number} " + "some words of a longer text " * 70 for number in range(10000)]
    text = "\n".join(words).encode()
    values = []
    for _ in range(runs):
        start = time.monotonic()
        subprocess.run(["fzf", "--filter", "number longer"], input=text, stdout=subprocess.DEVNULL, check=False)
        values.append((time.monotonic() - start) * 1000)
    report("10,000 entries of 2 KiB, fzf --filter, a process each", values)
    done = subprocess.run([ranking, "--benchmark_filter=10000", "--benchmark_min_time=0.2"], stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, check=False)
    for line in done.stdout.decode().splitlines():
        if "10000" in line:
            print("Brevix:", line, flush=True)


def main():
    ranking, runs = sys.argv[1], int(sys.argv[2])
    print(f"load average before: {os.getloadavg()[0]:.1f}")
    Stage.start_brevix()
    Stage.brevix.stop()
    seeded_library.add_prompts(TEXTS)
    measure_windows(runs)
    measure_insertion(runs)
    measure_filtering(ranking, max(3, runs // 3))
    print(f"load average after: {os.getloadavg()[0]:.1f}")


if __name__ == "__main__":
    main()
