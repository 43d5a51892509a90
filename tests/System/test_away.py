"""Nothing is counted while the person is away, whichever service tells it, and however many do."""

import time

import away_case
import case
import desktop

# Saying it, hearing it and saving it.
PROMPTLY = 0.7


class Away(away_case.Services, case.SystemTest):
    def setUp(self):
        super().setUp()
        self.start_services()
        self.desktop.launch_xterm()

    def blank_the_displays(self, begins):
        self.desktop.run("xset", "s", "activate" if begins == "true" else "reset")

    def test_counting_stops_at_once_and_resumes_when_all_are_over(self):
        reasons = (self.prepare_for_sleep, self.switch_session, self.lock, self.save_the_screen,
                   self.blank_the_displays)
        counted = 0.0

        def stand_still(seconds):
            """Nothing is booked in this time, and what was before is in the store."""
            time.sleep(PROMPTLY)
            self.assertAlmostEqual(self.store.total(), counted, delta=case.TOLERANCE)
            before = self.store.total()
            time.sleep(seconds)
            self.assertEqual(self.store.total(), before)

        self.lock("true")
        self.orvanta.start()
        stand_still(6)
        self.assertLess(self.store.total(), PROMPTLY)
        began = time.monotonic()
        self.lock("false")
        for number, reason in enumerate(reasons):
            with self.subTest(reason.__name__):
                desktop.sleep_until(began + 3)
                counted += time.monotonic() - began
                reason("true")
                stand_still(2)
                # Overlapping with the one before it.
                other = reasons[number - 1]
                other("true")
                reason("false")
                stand_still(2)
                began = time.monotonic()
                other("false")
        desktop.sleep_until(began + 3)
        counted += self.ask_to_end() - began
        self.assert_seconds({case.XTERM: counted})
