# SPDX-License-Identifier: GPL-3.0-or-later
"""Inserts into real programs in every way and writes down what happened.

usage: target_matrix.py RESULTS.json REPORT.md [PROGRAM…]     (on a virtual desktop)
"""
import datetime
import json
import os
import pathlib
import sys
import traceback

sys.path.insert(0, str(pathlib.Path(__file__).parents[1] / "EndToEnd"))
import desktop_driver as desk  # noqa: E402
import matrix_report  # noqa: E402
import scenario  # noqa: E402
import seeded_library  # noqa: E402
import target_programs  # noqa: E402
import x_display  # noqa: E402
from seeded_library import ACUTE, TEXTS, WOMAN  # noqa: E402

METHODS = {"direct": b'"hybrid"', "paste": b'"clipboardPaste"'}
CASES = ("empty", "middle", "selection", "script", "long")


class Stage(scenario.Scenario):
    """A scenario that is not run as a test: it opens the picker and owns clipboards."""

    def runTest(self):
        pass


class Matrix:
    def __init__(self, results_path):
        self.results_path = results_path
        self.results = json.loads(results_path.read_text()) if results_path.exists() else {}
        self.display = x_display.Display()

    def run(self, targets):
        Stage.start_brevix()
        Stage.brevix.stop()
        seeded_library.add_prompts(TEXTS)
        for method, preference in METHODS.items():
            Stage.defaults = {"preferredInsertionMethod": preference}
            Stage.start_brevix()
            for target_class in targets:
                self.try_program(target_class, method)
            Stage.tearDownClass()

    def try_program(self, target_class, method):
        stage, target = Stage(), target_class()
        if not target.is_installed():
            print(f"{target.name}: not installed", flush=True)
            return
        stage.setUp()
        key = f"{target.name}/{target.field_kind}"
        row = self.results.setdefault(key, {"name": target.name, "toolkit": target.toolkit, "package": target.package,
                                            "field": target.field_kind, "order": target_programs.ALL.index(target_class)})
        cells = row[method] = {}
        try:
            target.open()
            for case in self.cases_of(target):
                cells[case] = self.try_case(stage, target, case)
                print(f"{key:<34} {method:<7} {case:<10} {matrix_report.cell(cells[case])}", flush=True)
        except Exception as error:
            traceback.print_exc()
            cells["start"] = {"problem": f"the program could not be used: {error}"}
        finally:
            target.close()
            stage.doCleanups()
            for program in stage.programs:
                program.stop()
        self.results_path.write_text(json.dumps(self.results, indent=1, ensure_ascii=False))

    @staticmethod
    def cases_of(target):
        if target.is_password:
            return ("password",)
        return ("empty", "script", "long") if target.is_terminal else CASES

    def try_case(self, stage, target, case):
        """One insertion: what happened, how long it took, and what came of clipboard and focus."""
        cell = {}
        try:
            target.focus()
            target.clear()
            before, behind = self.arrange(target, case)
            owner, content = stage.own_rich_clipboard()
            try:
                self.insert(stage, target, case, before + self.text_for(target, case), behind, cell)
            finally:
                self.check_clipboard(stage, content, cell)
            try:
                self.check_focus(target, case, before + self.text_for(target, case), behind)
            finally:
                owner.stop()
        except Exception as error:
            if not isinstance(error, desk.Failure):
                traceback.print_exc()
            cell["problem"] = f"{error}; {cell.get('problem', '')}"
            self.keep_picture(target, case)
        finally:
            self.close_picker()
        return cell

    def keep_picture(self, target, case):
        folder = self.results_path.parent / "failures"
        folder.mkdir(exist_ok=True)
        desk.screenshot(folder / f"{target.name}-{target.field_kind}-{case}.png".replace(" ", "_"))

    @staticmethod
    def close_picker():
        for _ in range(3):
            if desk.panel():
                desk.keys("Escape")

    @staticmethod
    def arrange(target, case):
        """Fills the field for a case; gives what stays before and behind the insertion."""
        if case == "middle":
            target.put("before after", behind=" after")
            return "before", " after"
        if case == "selection":
            target.put("keep replace keep", behind=" keep", selected="replace")
            return "keep ", " keep"
        if case == "script" and not target.is_terminal:
            target.put(f"{WOMAN}{ACUTE} x", behind="x")
            return f"{WOMAN}{ACUTE} ", "x"
        if case == "password":
            desk.type_text("secret")
            target.when_holding("secret", 10)
        return "", ""

    @staticmethod
    def title_for(target, case):
        if case == "script":
            return "zuluthree"
        if case == "long":
            return "zulufour" if target.is_single_line else "zulufive"
        return "zuluone" if target.is_single_line else "zulutwo"

    @classmethod
    def text_for(cls, target, case):
        return TEXTS[cls.title_for(target, case)]

    def insert(self, stage, target, case, expected, behind, cell):
        owner = self.display.selection_owner()
        stage.find({"title": self.title_for(target, case)})
        start = self.display.press("Return")
        if case == "password":
            self.expect_refusal(stage, target, cell)
            return
        try:
            moment = target.when_seen(expected + behind, 20 if case == "long" else 8)
        except desk.Failure:
            said = stage.picker_says() if desk.panel() else ""
            if "Instead" in said:
                cell["said"] = next((line for line in said.split("\n") if "Copy instead" in line), "")
            raise
        cell["ms"] = round((moment - start) * 1000, 1)
        stage.brevix.wait_until_closed(15)
        # A paste takes the clipboard over and gives its content back under another owner.
        cell["method"] = "direct" if self.display.selection_owner() == owner else "paste"

    @staticmethod
    def check_clipboard(stage, content, cell):
        try:
            stage.assert_clipboard_is(content)
        except desk.Failure:
            cell["problem"] = "the clipboard is not as it was; "

    def check_focus(self, target, case, expected, behind):
        """What is typed now arrives right behind the inserted text."""
        if case == "password":
            return
        desk.wait_for("the focus to be back", lambda: desk.active_window() == target.window, 5)
        self.display.press("x")
        target.when_holding(expected + "x" + behind, 8)
        desk.wait_for("the keys to be up", lambda: not self.display.pressed_keys(), 2)

    @staticmethod
    def expect_refusal(stage, target, cell):
        desk.wait_for("an outcome", lambda: target.read() != "secret" or desk.panel() is None
                      or "Password fields are" in stage.picker_says(), 8, 0.05)
        if target.read() != "secret":
            raise desk.Failure(f"the password field holds {target.read()!r}")
        if desk.panel() is None:
            raise desk.Failure("the picker closed as if it had inserted")
        cell["method"] = "refused"


def main():
    results, report, wanted = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3:]
    results.parent.mkdir(parents=True, exist_ok=True)
    targets = [target for target in target_programs.ALL
               if not wanted or any(name.lower() in f"{target.name}/{target.field_kind}".lower() for name in wanted)]
    matrix = Matrix(results)
    load = os.getloadavg()[0]
    matrix.run(targets)
    about = matrix.results.setdefault("", {})
    about["when"] = datetime.date.today().isoformat()
    about["load"] = round(max(load, os.getloadavg()[0]), 1)
    results.write_text(json.dumps(matrix.results, indent=1, ensure_ascii=False))
    report.write_text(matrix_report.render(matrix.results))
    return 0


if __name__ == "__main__":
    sys.exit(main())
