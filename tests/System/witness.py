"""What must have been counted, from what the desktop itself says is in front and what a test did."""

import bisect
import contextlib
import re
import subprocess
import threading
import time

import desktop


class Witness:
    """Follows the X server's active window with a program of its own, and adds up by hand.

    `keys` gives the activity's key by the class of a window; a class that is not in it never counts.
    """

    def __init__(self, place, keys):
        self._place = place
        self._keys = keys
        self._events = []  # (moment, what, value)
        self._spy = place.spawn(["xprop", "-root", "-spy", "_NET_ACTIVE_WINDOW"],
                                stdout=subprocess.PIPE)
        threading.Thread(target=self._follow, daemon=True).start()

    def _follow(self):
        with contextlib.suppress(ValueError):  # Closed with the desktop.
            for line in self._spy.stdout:
                moment = time.monotonic()
                found = re.search(rb"window id # (0x[0-9a-f]+)", line)
                self.note("front", found and self._key_of(found[1].decode()), moment)

    def _key_of(self, window):
        try:
            said = self._place.run("xprop", "-id", window, "WM_CLASS")
        except desktop.DesktopError:
            return None  # It has gone since.
        found = re.search(r'= "[^"]*", "([^"]*)"', said)
        return found and self._keys.get(found[1])

    def note(self, what, value, moment=None):
        """What a test did: "running", "away", "barred" with (key, whether), "midnight", "reset",
        "erased"."""
        bisect.insort(self._events, (moment or time.monotonic(), what, value),
                      key=lambda event: event[0])

    def visits(self, key):
        return sum(what == "front" and value == key for _, what, value in self._events)

    def expected(self):
        """Until now: the seconds since the last midnight or reset by key, and those of each day since
        the history was erased, the first day first."""
        session, days = {}, [{}]
        front, barred, flags = None, set(), {"running": False, "away": False}
        before = None
        now = time.monotonic()
        events = [event for event in self._events if event[0] <= now]
        for moment, what, value in [*events, (now, "now", None)]:
            if front and front not in barred and flags["running"] and not flags["away"]:
                for seconds in (session, days[-1]):
                    seconds[front] = seconds.get(front, 0) + moment - before
            before = moment
            if what == "front":
                front = value
            elif what in flags:
                flags[what] = value
            elif what == "barred":
                key, is_barred = value
                (barred.add if is_barred else barred.discard)(key)
            elif what == "midnight":
                session, days = {}, days + [{}]
            elif what == "reset":
                session = {}
            elif what == "erased":
                days = [{} for _ in days]
        return session, days
