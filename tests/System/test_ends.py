"""How Orvanta ends, and what it does when the desktop ends around it or is not there."""

import signal
import time

import case
import desktop


class Ends(case.SystemTest):
    def test_being_asked_to_end_books_the_last_stretch(self):
        self.desktop.launch_xterm()
        for number in (signal.SIGTERM, signal.SIGINT):
            before = self.store.total()
            began = self.orvanta.start()
            self.wait_until_something_is_unsaved()
            asked, code = self.orvanta.ask_to_end(number)
            self.assertEqual(code, 0, number.name)
            self.assertAlmostEqual(self.store.total() - before, asked - began,
                                   delta=case.TOLERANCE, msg=number.name)
            self.assert_sound()

    def test_the_display_vanishing_ends_it_with_everything_saved(self):
        self.desktop.launch_xterm()
        began = self.orvanta.start()
        self.wait_until_something_is_unsaved()
        vanished = self.desktop.kill_server()
        code = self.orvanta.wait(5)
        self.assertGreaterEqual(code, 0, f"ended by a signal: {self.orvanta.complaints()}")
        self.assert_sound()
        self.assert_seconds({case.XTERM: vanished - began})

    def test_nothing_is_counted_without_a_window_manager_and_counting_goes_on_with_the_next(self):
        mousepad = self.desktop.launch_mousepad()
        xterm = self.desktop.launch_xterm()
        began = self.orvanta.start()
        desktop.sleep_until(began + 4)
        ended = self.desktop.kill_window_manager()
        desktop.sleep_until(ended + 6)
        self.assertTrue(self.orvanta.is_running(), self.orvanta.complaints())
        self.desktop.start_window_manager()
        resumed = self.desktop.activate(mousepad)
        desktop.sleep_until(resumed + 4)
        returned = self.desktop.activate(xterm)
        desktop.sleep_until(returned + 3)
        asked, code = self.orvanta.ask_to_end()
        self.assertEqual(code, 0)
        self.assert_sound()
        self.assert_seconds({case.XTERM: ended - began + asked - returned,
                             case.MOUSEPAD: returned - resumed})

    def test_nothing_is_counted_after_the_last_window_closed(self):
        self.desktop.launch_xterm()
        began = self.orvanta.start()
        desktop.sleep_until(began + 4)
        self.desktop.close_windows()
        closed = time.monotonic()
        desktop.sleep_until(closed + 6)
        _, code = self.orvanta.ask_to_end()
        self.assertEqual(code, 0)
        self.assert_seconds({case.XTERM: closed - began})

    def test_without_a_display_it_says_so_and_fails(self):
        environment = dict(self.desktop.environment)
        del environment["DISPLAY"]
        self.orvanta.start(environment)
        self.assertEqual(self.orvanta.wait(), 1)
        said = self.orvanta.complaints()
        self.assertEqual(len(said.splitlines()), 1, said)
        self.assertRegex(said, r"ambiente gráfico.*\.$")

    def test_a_store_that_cannot_be_made_is_told_in_an_alert_and_fails(self):
        obstacle = self.desktop.folder / "a-file"
        obstacle.touch()
        environment = dict(self.desktop.environment, XDG_DATA_HOME=str(obstacle))
        for key in ("Return", "Escape"):
            self.orvanta.start(environment)
            pid = self.orvanta.process.pid
            desktop.wait_until(
                lambda: self.desktop.windows_of(pid) or not self.orvanta.is_running(), "an alert")
            self.assertTrue(self.orvanta.is_running(), f"no alert: {self.orvanta.complaints()}")
            alert = self.desktop.windows_of(pid)[0]
            # Its text is painted, so all that can be seen of it from here is that it is an alert.
            self.assertEqual(self.desktop.title(alert), "orvanta")
            self.assertTrue(self.desktop.is_dialog(alert))
            self.desktop.activate(alert)
            self.desktop.press(key)
            self.assertEqual(self.orvanta.wait(), 1, key)


if __name__ == "__main__":
    case.main()
