"""What every system test starts from: an empty desktop and Orvanta, not yet started."""

import collections
import contextlib
import os
import pathlib
import plistlib
import sqlite3
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

desktop.end_on_signals()


class Store(desktop.Store):
    """Seconds by key, as the session's activities have them and over all days."""

    def _seconds(self, table):
        with contextlib.suppress(sqlite3.OperationalError):  # It has not been made yet.
            return dict(self.rows(f"SELECT ZKEY, SUM(ZSECONDS) FROM {table} GROUP BY ZKEY"))
        return {}

    def session_seconds(self):
        return self._seconds("ZACTIVITY")

    def history_seconds(self):
        return self._seconds("ZDAYACTIVITY")

    def total(self):
        return sum(self.history_seconds().values())

    def integrity(self):
        return self.rows("PRAGMA integrity_check")[0][0]


class SystemTest(unittest.TestCase):
    maxDiff = None
    TERMINAL = XTERM

    def setUp(self):
        self.desktop = self.make_desktop()
        self.addCleanup(self.desktop.close)
        self.desktop.open()
        self.orvanta = desktop.Orvanta(self.desktop, os.environ["ORVANTA_EXECUTABLE"])
        self.addCleanup(lambda: print(self.orvanta.complaints(), file=sys.stderr))
        self.store = Store(self.orvanta.store.path)
        self.due = collections.Counter()
        self._counting, self._since = None, 0.0

    def make_desktop(self):
        return desktop.Desktop(time_zone=desktop.zone_far_from_midnight())

    def configuration(self):
        return pathlib.Path(self.desktop.environment["XDG_CONFIG_HOME"])

    def preferences(self, name=""):
        path = self.configuration() / f"{desktop.DOMAIN}{name}.plist"
        return plistlib.loads(path.read_bytes()) if path.exists() else {}

    def prefer(self, name="", **preferences):
        (self.configuration() / f"{desktop.DOMAIN}{name}.plist").write_bytes(
            plistlib.dumps(preferences))

    def decisions(self):
        """Which browsers may tell their sites."""
        return self.preferences(".automation")

    def own_windows(self):
        return self.desktop.windows_of(self.orvanta.process.pid)

    def agree(self):
        """Answers the question that Orvanta puts, as a person with a keyboard does."""
        question = desktop.wait_until(self.own_windows, "the question", 2 * desktop.DEADLINE)[0]
        self.desktop.activate(question)
        self.desktop.press("space")

    def start(self):
        """Returns the moment at which it was there, a little before it counts: how long starting
        takes is the machine's affair."""
        self.orvanta.start()
        self.desktop.run("gdbus", "wait", "--session", "--timeout", "20", desktop.DOMAIN)
        return time.monotonic()

    def start_again(self):
        """A second start, as from a menu; it ends when the first has answered."""
        again = self.desktop.spawn([self.orvanta.executable])
        self.assertEqual(again.wait(desktop.DEADLINE), 0)

    def ask_to_end(self):
        asked, code = self.orvanta.ask_to_end()
        self.count(None, asked)
        self.assertEqual(code, 0)

    def count(self, key, since=None):
        """What must count from now or from that moment on, if anything: `due` adds it up."""
        since = since or time.monotonic()
        if self._counting:
            self.due[self._counting] += since - self._since
        self._counting, self._since = key, since

    def wait_to_count(self, key):
        """Waits until this is what counts, as far as it has been saved."""
        before = self.store.session_seconds().get(key, 0)
        desktop.wait_until(lambda: self.store.session_seconds().get(key, 0) > before,
                           f"{key} to count", 2 * desktop.DEADLINE)

    def gained_since(self, before):
        return {key: seconds - before.get(key, 0)
                for key, seconds in self.store.session_seconds().items()
                if seconds - before.get(key, 0) > 0.01}

    def wait_until_something_is_unsaved(self):
        """Leaves two and a half seconds that are measured and only in memory."""
        saved = self.store.total()
        desktop.wait_until(lambda: self.store.total() != saved, "a save")
        saved = self.store.total()
        time.sleep(2.5)
        self.assertEqual(self.store.total(), saved, "saved again within 2.5 s")

    def assert_nothing_counts(self):
        time.sleep(2)  # Until what was before has been booked.
        before = self.store.session_seconds()
        time.sleep(SAVE_INTERVAL + 0.5)
        self.assertEqual(self.store.session_seconds(), before)

    def assert_due(self):
        """The store is sound, and both tables hold the seconds that are due and no others."""
        self.assertEqual(self.store.integrity(), "ok")
        self.assert_near(self.gained_since({}), self.due, "session")
        self.assert_near(self.store.history_seconds(), self.due, "history")

    def assert_near(self, measured, expected, what):
        print(f"{what} {measured} of {expected}")
        self.assertEqual(set(measured), set(expected), what)
        for key, seconds in expected.items():
            self.assertAlmostEqual(measured[key], seconds, delta=TOLERANCE, msg=f"{key} {what}")
