"""What every system test starts from: an empty desktop and Orvanta, not yet started."""

import os
import sys
import time
import unittest

import desktop

XTERM = "app:debian-xterm"
MOUSEPAD = "app:org.xfce.mousepad"

# What is measured may differ from what a test saw by this much, in seconds.
TOLERANCE = 1.0

# Orvanta saves at least this often while it counts.
SAVE_INTERVAL = 5.0


class SystemTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        executable = os.environ.get("ORVANTA_EXECUTABLE")
        self.assertTrue(executable, "ORVANTA_EXECUTABLE does not say what to test")
        self.desktop = desktop.Desktop(time_zone=desktop.zone_far_from_midnight())
        self.addCleanup(self.desktop.close)
        self.desktop.open()
        self.orvanta = desktop.Orvanta(self.desktop, executable)
        self.addCleanup(self._repeat_complaints)

    def _repeat_complaints(self):
        complaints = self.orvanta.complaints()
        if complaints:
            print(f"Orvanta said: {complaints}", file=sys.stderr)

    @property
    def store(self):
        return self.orvanta.store

    def wait_for_save(self):
        before = self.store.history_seconds()
        desktop.wait_until(lambda: self.store.history_seconds() != before, "a save")

    def wait_until_something_is_unsaved(self):
        """Leaves two and a half seconds that are measured and only in memory."""
        self.wait_for_save()
        saved = self.store.total()
        time.sleep(2.5)
        self.assertEqual(self.store.total(), saved, "saved again within 2.5 s")

    def assert_seconds(self, expected):
        """Both tables hold these keys with these seconds, and time of no others."""
        for table, measured in (("ZACTIVITY", self.store.session_seconds()),
                                ("ZDAYACTIVITY", self.store.history_seconds())):
            self.assertEqual({key for key, seconds in measured.items() if seconds}, set(expected),
                             table)
            for key, seconds in expected.items():
                self.assertAlmostEqual(measured[key], seconds, delta=TOLERANCE,
                                       msg=f"{key} in {table}")

    def assert_sound(self):
        self.assertEqual(self.store.integrity(), "ok")


def main():
    desktop.end_on_signals()
    unittest.main(verbosity=2)
