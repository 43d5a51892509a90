"""However often Orvanta is started, one process works on the store."""

import signal

import case
import desktop


class SingleInstance(case.SystemTest):
    def setUp(self):
        super().setUp()
        self.desktop.launch_xterm()
        self.second = desktop.Orvanta(self.desktop, self.orvanta.executable)

    def wait_for_tracking(self):
        desktop.wait_until(lambda: self.store.total() > 0, "the first seconds in the store")

    def test_a_second_start_hands_over_and_ends(self):
        began = self.orvanta.start()
        self.wait_for_tracking()
        for _ in range(3):
            self.second.start()
            self.assertEqual(self.second.wait(5), 0, self.second.complaints())
        self.assertTrue(self.orvanta.is_running())
        asked, code = self.orvanta.ask_to_end()
        self.assertEqual(code, 0)
        self.assert_seconds({case.XTERM: asked - began})

    def test_starts_at_the_same_moment_leave_one(self):
        others = [desktop.Orvanta(self.desktop, self.orvanta.executable) for _ in range(5)]
        for each in others:
            each.start()
        desktop.wait_until(lambda: sum(each.is_running() for each in others) == 1,
                           "the end of all but one")
        self.wait_for_tracking()
        self.assertEqual(sum(each.is_running() for each in others), 1)

    def test_one_that_hangs_keeps_its_store_and_one_that_was_killed_does_not(self):
        self.orvanta.start()
        self.wait_for_tracking()
        self.orvanta.process.send_signal(signal.SIGSTOP)
        total = self.store.total()
        self.second.start()
        self.assertEqual(self.second.wait(10), 1)
        self.assertIn("não respondeu", self.second.complaints())
        self.assertEqual(self.store.total(), total)

        self.orvanta.kill()
        self.second.start()
        desktop.wait_until(lambda: self.store.total() > total, "the next one's seconds")


if __name__ == "__main__":
    case.main()
