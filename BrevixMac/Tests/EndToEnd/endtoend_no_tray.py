# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop without a tray: the hotkey and the command line still reach everything."""
import desktop_driver as desk
import scenario
from doctor import Report


class WithoutATray(scenario.Scenario):
    def test_the_main_job_works(self):
        program, _ = self.open_window("mousepad", "mousepad", "--disable-server")
        field = desk.field(program.pid)
        expected = self.insert_lines()
        desk.wait_for_text(field, expected)

    def test_the_doctor_says_what_is_missing(self):
        report = Report()
        self.assertEqual((report.source, report.code), ("instance", 1))
        self.assertEqual([name for name in report.rows if report.state(name) == "fails"], ["tray"])
        self.assertIn("Nothing shows tray icons", report.rows["tray"]["reason"])
        self.assertIn("panel", report.rows["tray"]["fix"])

    def test_the_picker_opens_on_screen(self):
        x, y, width, height = desk.window_geometry(self.brevix.press_hotkey())
        self.assertTrue(0 <= x <= 1280 - width and 0 <= y <= 900 - height, (x, y, width, height))


if __name__ == "__main__":
    scenario.main()
