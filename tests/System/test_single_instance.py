"""However often Orvanta is started, one process works on the store."""

import signal

import case
import desktop


class SingleInstance(case.SystemTest):
    def setUp(self):
        super().setUp()
        self.desktop.launch_xterm()
        self.others = [desktop.Orvanta(self.desktop, self.orvanta.executable) for _ in range(5)]

    def running(self):
        return [each for each in self.others if each.is_running()]

    def test_many_starts_leave_one(self):
        began = self.start()
        self.wait_to_count(case.XTERM)
        self.start_again()
        self.assert_seconds({case.XTERM: self.ask_to_end() - began})

        for each in self.others:
            each.start()
        desktop.wait_until(lambda: len(self.running()) == 1, "the end of all but one")
        # However early they came, the one that was first has answered them.
        self.assertEqual([each.process.poll() for each in self.others if not each.is_running()],
                         [0] * 4)
        self.wait_to_count(case.XTERM)
        self.assertEqual(len(self.running()), 1)

    def test_one_that_hangs_keeps_its_store(self):
        self.start()
        self.wait_to_count(case.XTERM)
        self.orvanta.process.send_signal(signal.SIGSTOP)
        total = self.store.total()
        second = self.others[0]
        second.start()
        self.assertEqual(second.wait(10), 1)
        self.assertIn("não respondeu", second.complaints())
        self.assertEqual(self.store.total(), total)

        self.kill()
        second.start()
        self.wait_to_count(case.XTERM)
