"""Applications in turn in front: each one's time is right."""

import time

import case
import desktop

# Uneven, so that no rhythm of Orvanta's own falls together with the switches. The first is longer
# than a save is away.
STRETCHES = (7, 2, 5, 3, 4, 3)

# Dates in the store are seconds since 2001-01-01 00:00 UTC.
STORE_EPOCH = 978307200.0


class InTurn:
    """For a test on any desktop."""

    def windows(self):
        return {self.TERMINAL: self.desktop.launch_terminal(),
                case.MOUSEPAD: self.desktop.launch_mousepad()}

    def test_each_has_its_time(self):
        windows = self.windows()
        keys = tuple(windows)
        self.start()
        self.desktop.activate(windows[keys[-1]])
        self.wait_to_count(keys[-1])

        before = self.store.session_seconds().get(keys[0], 0)
        due = since = began = self.desktop.activate(windows[keys[0]])
        self.wait_to_count(keys[0])  # What was in front before it has been saved.
        before = self.store.session_seconds() | {keys[0]: before}
        seen = dict.fromkeys(keys, 0.0)
        left_at = {}
        for index, stretch in enumerate(STRETCHES):
            due += stretch
            desktop.sleep_until(due)
            key, following = (keys[each % len(keys)] for each in (index, index + 1))
            is_last = index == len(STRETCHES) - 1
            switched = self.ask_to_end() if is_last else self.desktop.activate(windows[following])
            seen[key] += switched - since
            left_at[key] = time.time()
            since = switched

        gained = self.gained_since(before)
        self.assert_near(gained, seen)
        self.assertAlmostEqual(sum(gained.values()), since - began, delta=case.TOLERANCE)
        self.assert_near(self.store.history_seconds(), self.gained_since({}), "history")
        used = dict(self.store.rows("SELECT ZKEY, ZLASTUSEDAT FROM ZACTIVITY WHERE ZSECONDS > 0"))
        self.assert_near({key: last + STORE_EPOCH for key, last in used.items()}, left_at, "used")


class TwoApplications(InTurn, case.SystemTest):
    pass
