# SPDX-License-Identifier: GPL-3.0-or-later
"""`brevix doctor` as the tests of several desktops call it."""
import json
import os
import subprocess

BREVIX = os.environ["BREVIX"]
ROWS = ["hotkey", "capture", "directInsertion", "paste", "clipboardRestore", "tray", "schemeHandler"]


def run(*arguments, env=None, without=()):
    environment = {key: value for key, value in {**os.environ, **(env or {})}.items() if key not in without}
    return subprocess.run([BREVIX, *arguments], env=environment, capture_output=True, text=True, timeout=40)


class Report:
    """What it says, by the rows' identifiers."""

    def __init__(self, *arguments, **environment):
        self.done = run(*arguments, "doctor", "--json", **environment)
        self.json = json.loads(self.done.stdout)
        self.code = self.done.returncode
        self.source = self.json["source"]
        self.rows = {row["id"]: row for row in self.json["rows"]}

    def state(self, name):
        return self.rows[name]["state"]

    def states(self):
        return {name: row["state"] for name, row in self.rows.items()}
