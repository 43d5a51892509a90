"""Two applications in turn in front for a minute: each one's time is right."""

import time

import case
import desktop

# Uneven, so that no rhythm of Orvanta's own falls together with the switches. Sixty seconds.
STRETCHES = (7, 3, 11, 2, 5, 8, 4, 9, 6, 5)

# Dates in the store are seconds since 2001-01-01 00:00 UTC.
STORE_EPOCH = 978307200.0


class TwoApplications(case.SystemTest):
    def test_each_has_its_time(self):
        windows = {case.XTERM: self.desktop.launch_xterm(),
                   case.MOUSEPAD: self.desktop.launch_mousepad()}
        order = tuple(windows)
        seen = dict.fromkeys(order, 0.0)
        left_at = {}
        self.desktop.activate(windows[order[0]])
        due = since = began = self.orvanta.start()
        for index, stretch in enumerate(STRETCHES):
            due += stretch
            desktop.sleep_until(due)
            if index == len(STRETCHES) - 1:
                switched = self.ask_to_end()
            else:
                switched = self.desktop.activate(windows[order[(index + 1) % 2]])
            seen[order[index % 2]] += switched - since
            left_at[order[index % 2]] = time.time()
            since = switched

        self.assert_seconds(seen)
        elapsed = since - began
        for measured in (self.store.session_seconds(), self.store.history_seconds()):
            total = sum(measured.values())
            self.assertAlmostEqual(total, elapsed, delta=case.TOLERANCE)
            self.assertLessEqual(total, elapsed + 0.1)
            print(f"{measured} of {seen}, {total:.3f} of {elapsed:.3f}")

        used = self.store.rows("SELECT ZKEY, ZNAME, ZLASTUSEDAT FROM ZACTIVITY WHERE ZSECONDS > 0")
        self.assertEqual({key: name for key, name, _ in used},
                         {case.XTERM: "XTerm", case.MOUSEPAD: "Mousepad"})
        for key, _, last in used:
            self.assertAlmostEqual(last + STORE_EPOCH, left_at[key], delta=case.TOLERANCE,
                                   msg=f"last use of {key}")
