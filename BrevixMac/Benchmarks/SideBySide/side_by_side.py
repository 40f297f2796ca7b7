# SPDX-License-Identifier: GPL-3.0-or-later
"""Brevix beside what a user would otherwise take, in one run on one machine; prints Markdown tables.

usage: side_by_side.py     (on a virtual desktop; started by tools/compare)
"""
import datetime
import os
import pathlib
import sys
import tempfile
import time

TESTS = pathlib.Path(__file__).parents[2] / "Tests"
sys.path[:0] = [str(TESTS / "EndToEnd"), str(TESTS / "Targets")]
import desktop_driver as desk  # noqa: E402
import entries  # noqa: E402
import filters  # noqa: E402
import insertions  # noqa: E402
import scenario  # noqa: E402
import seeded_library  # noqa: E402
import windows  # noqa: E402
import x_display  # noqa: E402

TITLE = "zulutext"
# One line, because xdotool leaves line breaks out.
TEXT = "".join(f"[{number}] some words of a text; " for number in range(100))[:1000]


class Stage(scenario.Scenario):
    """A scenario that is not run as a test: it starts Brevix and owns clipboards."""

    def runTest(self):
        pass

    def __init__(self, folder):
        super().__init__()
        self.folder = folder
        self.display = x_display.Display()

    @classmethod
    def begin(cls, preference, prompts):
        """Brevix with these prompts in its library, by title."""
        seeded_library.add_prompts(prompts)
        cls.defaults = {"preferredInsertionMethod": preference}
        cls.start_brevix()


def file_of(folder, name, lines):
    path = pathlib.Path(folder) / name
    path.write_text("\n".join(lines) + ("\n" if lines else ""))
    return path


def compare_windows_and_insertion(stage, folder):
    lines = entries.lines(windows.ENTRIES)
    file = file_of(folder, "entries.txt", lines)
    stage.begin(b'"hybrid"', {**{line: line for line in lines}, TITLE: TEXT})
    brevix = windows.measure_brevix(stage.brevix)
    with insertions.Insertions(stage, TEXT) as ways:
        ways.measure("Brevix, direct", lambda: ways.by_brevix(TITLE))
        stage.tearDownClass()
        stage.begin(b'"clipboardPaste"', {})
        ways.measure("Brevix, paste", lambda: ways.by_brevix(TITLE))
        stage.tearDownClass()
        for name, script in insertions.SCRIPTS.items():
            ways.measure(name, lambda script=script: ways.by_script(script))
    return windows.table(brevix, windows.measure_rofi(file), windows.measure_copyq(file)), ways.table()


def compare_filters(stage, folder):
    lines = entries.lines(filters.ENTRIES)
    file, empty = str(file_of(folder, "lines.txt", lines)), str(file_of(folder, "none.txt", []))
    ranking = filters.Ranking(file)
    rofi, fzf = filters.Process("rofi", file, empty), filters.Process("fzf", file, empty)
    stage.begin(b'"hybrid"', {line: line for line in lines})
    typed = {"brevix": filters.typed_into_brevix(stage.brevix)}
    stage.tearDownClass()
    typed["rofi"], typed["fzf"] = filters.typed_into_rofi(file), filters.typed_into_fzf(file)
    return filters.table(ranking, rofi, fzf, typed)


def main():
    start = time.monotonic()
    before = os.getloadavg()[0]
    with tempfile.TemporaryDirectory() as folder:
        stage = Stage(folder)
        stage.setUp()
        stage.start_brevix()   # makes the library
        stage.brevix.stop()
        shown, inserted = compare_windows_and_insertion(stage, folder)
        filtered = compare_filters(stage, folder)
    print(f"\n{datetime.date.today().isoformat()}, load average {before:.1f} before, {os.getloadavg()[0]:.1f} after, "
          f"{time.monotonic() - start:.0f} s. Medians, with the 95th percentile in brackets.\n")
    print("\n\n".join((shown, filtered, inserted)))


if __name__ == "__main__":
    main()
