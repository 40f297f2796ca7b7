# SPDX-License-Identifier: GPL-3.0-or-later
"""Inserts again and again into several programs while users and programs misbehave.

usage: endurance.py ROUNDS [SEED]     (on a virtual desktop)

After every round: the text is in the right field exactly once, or it is not there and the picker says why; every other
field is as it was; the clipboard is identical; no key is down; no child process is left. The same seed gives the same rounds.
SIGTERM ends the run after the present round, with its report.
"""
import collections
import os
import pathlib
import random
import signal
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "EndToEnd"))
import desktop_driver as desk  # noqa: E402
import seeded_library  # noqa: E402
import target_programs as programs  # noqa: E402
import x_display  # noqa: E402
from gi.repository import GLib  # noqa: E402
from seeded_library import TEXTS  # noqa: E402
from target_matrix import METHODS, Stage  # noqa: E402

POOL = (programs.Mousepad, programs.FeatherPad, programs.KWrite, programs.Zenity, programs.XTerm)
TITLES = ("zuluone", "zulutwo", "zuluthree", "zulusix")
EVENTS = {"nothing": 60, "held modifier": 12, "held for long": 3, "hang": 10, "switch": 10, "quit": 5}
CLIPBOARDS = {"rich": 50, "text": 30, "large": 10, "empty": 10}
ENOUGH = 4000
FAREWELL = {"couldn't reactivate": "not reactivated", "isn't answering": "outcome unknown",
            "Allow keyboard event posting": "keys held", "couldn't save your clipboard": "clipboard not saved",
            "couldn't find an editable": "no field"}


class Violation(Exception):
    """Something that must never happen."""


class Plan:
    """What one round does, drawn before it begins so that timing cannot change it."""

    def __init__(self, draw):
        self.target = draw.randrange(len(POOL))
        self.title = "zuluone" if POOL[self.target].is_single_line else draw.choice(TITLES)
        self.event = draw.choices(list(EVENTS), EVENTS.values())[0]
        self.clipboard = draw.choices(list(CLIPBOARDS), CLIPBOARDS.values())[0]
        self.pause = draw.choice((0, 0, 0, 0.1, 0.5))
        self.event_delay = draw.uniform(0, 0.3)
        self.event_length = draw.uniform(0.1, 1.5)
        self.modifier = draw.choice(("Shift_L", "Control_L", "Alt_L", "Super_L"))
        self.other = (self.target + draw.randrange(1, len(POOL))) % len(POOL)

    def __str__(self):
        return f"{POOL[self.target].name}, {self.title}, clipboard {self.clipboard}, {self.event}"


class Endurance:
    def __init__(self, seed):
        self.draw = random.Random(seed)
        self.display = x_display.Display()
        self.stage = None
        self.targets = [None] * len(POOL)
        self.expected = [""] * len(POOL)
        self.outcomes = collections.Counter()
        self.events = collections.Counter()
        self.milliseconds = collections.defaultdict(list)
        self.violations = []
        self.memory = []
        self.is_stopping = False
        signal.signal(signal.SIGTERM, lambda *_: setattr(self, "is_stopping", True))

    # Programs

    def open_target(self, index):
        target = POOL[index]()
        target.open()
        self.targets[index], self.expected[index] = target, ""

    def tidy(self, index):
        target = self.targets[index]
        target.focus()
        if len(self.expected[index]) > ENOUGH or target.is_single_line:
            target.clear()
            self.expected[index] = ""
        elif not target.is_terminal:
            desk.keys("ctrl+End")

    # One round

    def run_round(self, number):
        plan = Plan(self.draw)
        self.events[plan.event] += 1
        self.stage = Stage()
        self.stage.setUp()
        try:
            if self.targets[plan.target] is None:
                self.open_target(plan.target)
            self.tidy(plan.target)
            content = self.own_clipboard(plan.clipboard)
            time.sleep(plan.pause)
            outcome = self.insert(plan)
            self.check_everything(plan, content, outcome)
            self.outcomes[outcome] += 1
        except (Violation, desk.Failure, GLib.Error) as error:
            self.violations.append(f"round {number} ({plan}): {error}")
            outcome = f"VIOLATION {error}"
            self.recover()
        finally:
            self.close_picker()
            for program in self.stage.programs:
                program.stop()
        if number % 10 == 0:
            self.memory.append(self.own_memory())
        print(f"{number:>5} {plan}: {outcome}", flush=True)

    def own_clipboard(self, kind):
        if kind == "rich":
            return self.stage.own_rich_clipboard()[1]
        if kind == "empty":
            # Owned for a moment by a program that ends, so that nobody owns it.
            owner, _ = self.stage.own_rich_clipboard()
            owner.stop()
            desk.wait_for("nobody to own the clipboard", lambda: self.display.selection_owner() == 0)
            return {}
        if kind == "text":
            text = f"the user's own text {self.draw.random()}"
            desk.copy_text(text)
            return desk.clipboard()
        with tempfile.NamedTemporaryFile() as file:
            file.write(self.draw.randbytes(3_000_000))
            file.flush()
            subprocess.run(["xclip", "-selection", "clipboard", "-t", "image/png", "-i", file.name], check=True,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        desk.wait_for("the picture", lambda: desk.clipboard_types() == ["image/png"])
        return desk.clipboard()

    def insert(self, plan):
        target = self.targets[plan.target]
        owner = self.display.selection_owner()
        self.stage.find({"title": plan.title})
        if plan.event == "quit":
            for pid in target.pids():
                os.kill(pid, signal.SIGKILL)
            target.program.process.wait()
        if plan.event == "hang":
            programs.freeze(target)
        start = self.display.press("Return")
        try:
            self.disturb(plan)
            said = self.wait_for_outcome()
        finally:
            if plan.event == "hang":
                programs.thaw(target)
        if said:
            if plan.event in ("nothing", "held modifier", "held for long", "hang", "quit"):
                self.assert_picker_has_keyboard(said)
            return said
        if plan.event == "quit":
            raise Violation("success was reported for a program that had been killed")
        expected = self.expected[plan.target] + TEXTS[plan.title]
        moment = target.when_holding(expected, 12)
        self.expected[plan.target] = expected
        direct = self.display.selection_owner() == owner and plan.clipboard != "empty"
        if plan.event == "nothing":
            self.milliseconds["all" if plan.clipboard == "empty" else "direct" if direct else "paste"].append(
                (moment - start) * 1000)
        return "inserted"

    def disturb(self, plan):
        """What user and program do while the insertion is under way: the times are part of the test."""
        if plan.event in ("held modifier", "held for long"):
            self.display.set_key(plan.modifier, True)
            time.sleep(2.5 if plan.event == "held for long" else plan.event_length)
            self.display.set_key(plan.modifier, False)
        elif plan.event == "hang":
            time.sleep(plan.event_length)
            programs.thaw(self.targets[plan.target])
        elif plan.event == "switch" and self.targets[plan.other] is not None:
            time.sleep(plan.event_delay)
            subprocess.run(["xdotool", "windowactivate", str(self.targets[plan.other].window)], check=False,
                           stderr=subprocess.DEVNULL)

    def wait_for_outcome(self):
        """Nothing for a success, else in one word what the picker says."""
        said = []

        def is_decided():
            if desk.panel() is None:
                return True
            text = self.stage.picker_says()
            said[:] = [short for sign, short in FAREWELL.items() if sign in text]
            return bool(said) and "Instead" in text
        desk.wait_for("an outcome", is_decided, 15, 0.03)
        return said[0] if said and desk.panel() is not None else None

    @staticmethod
    def assert_picker_has_keyboard(said):
        try:
            desk.wait_for("the keyboard", lambda: desk.active_window() == desk.panel(), 2, 0.05)
        except desk.Failure:
            raise Violation(f"after \"{said}\" the picker has an offer and not the keyboard") from None

    # What must hold after each round

    def check_everything(self, plan, content, outcome):
        self.close_picker()
        if plan.event == "quit":
            self.targets[plan.target].close()
            self.targets[plan.target] = None
        try:
            self.stage.assert_clipboard_is(content)
        except desk.Failure:
            raise Violation(f"the clipboard holds {sorted(desk.clipboard_types())}, not {sorted(content)}") from None
        if outcome == "outcome unknown":
            self.accept_either(plan)
        for index, target in enumerate(self.targets):
            if target is not None and target.read() != self.expected[index]:
                raise Violation(f"{target.name} after \"{outcome}\": {difference(self.expected[index], target.read())}")
        if self.display.pressed_keys():
            raise Violation(f"keys are down: {self.display.pressed_keys()}")
        zombies = [pid for pid, parent, state in processes() if parent == Stage.brevix.pid and state == "Z"]
        if zombies:
            raise Violation(f"children were left: {zombies}")
        if not Stage.brevix.is_running():
            raise Violation("Brevix has ended")

    def accept_either(self, plan):
        """The program fell silent: the text may be there once, or not at all."""
        both = (self.expected[plan.target], self.expected[plan.target] + TEXTS[plan.title])
        target = self.targets[plan.target]
        desk.wait_for("a settled field", lambda: target.read() in both, 10, 0.1)
        self.expected[plan.target] = target.read()

    @staticmethod
    def close_picker():
        """Escape, as often as it takes. After a failure the picker has the keyboard, unless the user went elsewhere."""
        for _ in range(3):
            panel = desk.panel()
            if panel:
                if desk.active_window() != panel:
                    desk.activate(panel)
                desk.keys("Escape")

    def recover(self):
        """Goes on with fresh programs after a violation."""
        for name in ("Shift_L", "Control_L", "Alt_L", "Super_L"):
            self.display.set_key(name, False)
        for index, target in enumerate(self.targets):
            if target is not None:
                target.close()
                self.targets[index] = None

    # The whole

    @staticmethod
    def own_memory():
        """What grows when something leaks, in MiB: unlike the proportional size it does not depend on other programs."""
        text = pathlib.Path(f"/proc/{Stage.brevix.pid}/smaps_rollup").read_text()
        return next(int(line.split()[1]) for line in text.splitlines() if line.startswith("Anonymous:")) / 1024

    def run(self, rounds):
        Stage.start_brevix()
        Stage.brevix.stop()
        seeded_library.add_prompts(TEXTS)
        halves = list(METHODS.items())
        number = 0
        for part, (_, preference) in enumerate(halves):
            Stage.defaults = {"preferredInsertionMethod": preference}
            Stage.start_brevix()
            self.memory = []
            while not self.is_stopping and number < rounds * (part + 1) // len(halves):
                number += 1
                self.run_round(number)
            self.report_memory(preference.decode())
            # What Qt says about programs that hang is no fault here; the end in good order is what counts.
            code = Stage.brevix.stop()
            if code != 0:
                self.violations.append(f"Brevix ended with {code}")
        for target in self.targets:
            if target is not None:
                target.close()

    def report_memory(self, preference):
        if len(self.memory) < 6:
            return
        # A saved clipboard of some megabytes is kept for a while, so single samples say little.
        first, last = min(self.memory[1:4]), min(self.memory[-3:])
        print(f"memory with {preference}: {first:.1f} MiB of its own after 20 to 40 rounds, {last:.1f} MiB in the last 30 "
              f"({(last / first - 1) * 100:+.1f} %), highest {max(self.memory):.1f} MiB", flush=True)
        if last > first * 1.05:
            self.violations.append(f"memory grew from {first:.1f} to {last:.1f} MiB")

    def report(self):
        print("\nrounds by event:", dict(self.events))
        print("outcomes:", dict(self.outcomes))
        for way, values in self.milliseconds.items():
            if values:
                high = sorted(values)[int(0.95 * len(values))]
                print(f"{way}: median {statistics.median(values):.0f} ms, 95 % {high:.0f} ms ({len(values)})")
        print(f"violations: {len(self.violations)}")
        for violation in self.violations:
            print(" -", violation)


def difference(expected, found):
    """Where two texts part, in a few words."""
    start = len(os.path.commonprefix((expected, found)))
    end = len(os.path.commonprefix((expected[start:][::-1], found[start:][::-1])))
    missing, extra = expected[start:len(expected) - end], found[start:len(found) - end]
    return (f"at {start} of {len(expected)}, {programs.shortened(missing)} is missing and "
            f"{programs.shortened(extra)} too much")


def processes():
    """Process, parent and state of every process."""
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            try:
                fields = (entry / "stat").read_text().rsplit(")", 1)[1].split()
                yield int(entry.name), int(fields[1]), fields[0]
            except (FileNotFoundError, ProcessLookupError):
                continue


def main():
    rounds = int(sys.argv[1])
    seed = int(sys.argv[2]) if len(sys.argv) > 2 else 1
    print(f"{rounds} rounds, seed {seed}", flush=True)
    endurance = Endurance(seed)
    endurance.run(rounds)
    endurance.report()
    return 1 if endurance.violations else 0


if __name__ == "__main__":
    sys.exit(main())
