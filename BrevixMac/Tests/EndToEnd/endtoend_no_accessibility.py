# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop whose accessibility is switched off: the picker says so, and copying works."""
import desktop_driver as desk
import scenario
from doctor import Report
from scenario import LINES


class WithoutAccessibility(scenario.Scenario):
    def test_the_doctor_says_what_is_missing(self):
        report = Report()
        self.assertEqual((report.source, report.code), ("instance", 1))
        failing = [name for name in report.rows if report.state(name) == "fails"]
        self.assertEqual(failing, ["capture", "directInsertion", "paste"])
        self.assertIn("switched off", report.rows["capture"]["reason"])
        self.assertIn("Request", report.rows["capture"]["fix"])

    def test_the_text_can_be_copied_and_pasted_by_the_user(self):
        self.open_window("xterm", "xterm")
        self.brevix.press_hotkey()
        desk.type_text(LINES["title"])
        desk.keys("ctrl+Return")
        desk.wait_for("the copy", lambda: desk.clipboard().get("UTF8_STRING") == LINES["text"].encode())
        desk.keys("Escape")
        self.brevix.wait_until_closed()


if __name__ == "__main__":
    scenario.main()
