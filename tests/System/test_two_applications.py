"""Two applications in turn in front for a minute: each one's time is right."""

import time

import case
import desktop

# Uneven, so that no rhythm of Orvanta's own falls together with the switches. Sixty seconds.
STRETCHES = (7, 3, 11, 2, 5, 8, 4, 9, 6, 5)


class TwoApplications(case.SystemTest):
    def test_each_has_its_time_and_together_they_have_all_of_it(self):
        xterm = self.desktop.launch_xterm()
        mousepad = self.desktop.launch_mousepad()
        windows = {case.XTERM: xterm, case.MOUSEPAD: mousepad}
        order = (case.XTERM, case.MOUSEPAD)

        seen = dict.fromkeys(order, 0.0)
        left_at = {}
        self.desktop.activate(xterm)
        began = self.orvanta.start()
        due = since = began
        for index, stretch in enumerate(STRETCHES):
            key = order[index % 2]
            due += stretch
            desktop.sleep_until(due)
            if index == len(STRETCHES) - 1:
                modes = self.store.modes()
                switched, code = self.orvanta.ask_to_end()
            else:
                switched = self.desktop.activate(windows[order[(index + 1) % 2]])
            seen[key] += switched - since
            left_at[key] = time.time()
            since = switched
        self.assertEqual(code, 0)

        name = self.store.path.name
        self.assertEqual(modes, {name: 0o600, f"{name}-wal": 0o600, f"{name}-shm": 0o600})
        self.assert_sound()
        self.assert_seconds(seen)
        elapsed = since - began
        for table, measured in (("ZACTIVITY", self.store.session_seconds()),
                                ("ZDAYACTIVITY", self.store.history_seconds())):
            self.assertAlmostEqual(sum(measured.values()), elapsed, delta=case.TOLERANCE,
                                   msg=table)
            self.assertLessEqual(sum(measured.values()), elapsed + 0.1, table)
            print(f"{table}: {measured} of {seen}, {sum(measured.values()):.3f} of {elapsed:.3f}")

        used = self.store.rows(
            "SELECT ZKEY, ZNAME, ZLASTUSEDAT FROM ZACTIVITY WHERE ZSECONDS > 0")
        self.assertEqual({key: name for key, name, _ in used},
                         {case.XTERM: "XTerm", case.MOUSEPAD: "Mousepad"})
        for key, _, last in used:
            self.assertAlmostEqual(last + desktop.STORE_EPOCH, left_at[key],
                                   delta=case.TOLERANCE, msg=f"last use of {key}")


if __name__ == "__main__":
    case.main()
