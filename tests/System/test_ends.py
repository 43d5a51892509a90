"""How Orvanta ends, and what it does when the desktop ends around it or is not there."""

import signal
import time

import case
import desktop


class Ends(case.SystemTest):
    def test_being_asked_to_end_books_the_last_stretch(self):
        self.desktop.launch_xterm()
        counted = 0.0
        for number in (signal.SIGTERM, signal.SIGINT):
            began = self.start()
            self.wait_until_something_is_unsaved()
            asked, code = self.orvanta.ask_to_end(number)
            self.assertEqual(code, 0, number.name)
            counted += asked - began
            self.assert_seconds({case.XTERM: counted})

    def test_nothing_is_counted_without_a_window_manager_or_a_window(self):
        mousepad = self.desktop.launch_mousepad()
        xterm = self.desktop.launch_xterm()
        began = self.start()
        desktop.sleep_until(began + 3)
        self.desktop.window_manager.kill()
        self.desktop.window_manager.wait()
        ended = time.monotonic()
        desktop.sleep_until(ended + 3)
        self.assertTrue(self.orvanta.is_running(), self.orvanta.complaints())
        self.desktop.start_window_manager()
        resumed = self.desktop.activate(mousepad)
        desktop.sleep_until(resumed + 3)
        returned = self.desktop.activate(xterm)
        desktop.sleep_until(returned + 2)
        self.desktop.close_windows()
        closed = time.monotonic()
        desktop.sleep_until(closed + 3)
        self.ask_to_end()
        self.assert_seconds({case.XTERM: ended - began + closed - returned,
                             case.MOUSEPAD: returned - resumed})

    def test_without_a_display_or_a_store_it_says_so_and_fails(self):
        environment = dict(self.desktop.environment)
        del environment["DISPLAY"]
        self.orvanta.start(environment)
        self.assertEqual(self.orvanta.wait(), 1)
        self.assertRegex(self.orvanta.complaints(), r"^[^\n]*ambiente gráfico[^\n]*\.$")

        obstacle = self.desktop.folder / "a-file"
        obstacle.touch()
        environment = dict(self.desktop.environment, XDG_DATA_HOME=str(obstacle))
        for key in ("Return", "Escape"):
            self.orvanta.start(environment)
            desktop.wait_until(lambda: self.own_windows() or not self.orvanta.is_running(),
                               "an alert")
            self.assertTrue(self.orvanta.is_running(), f"no alert: {self.orvanta.complaints()}")
            alert = self.own_windows()[0]
            # Its text is painted, so all that can be seen of it from here is that it is an alert.
            said = self.desktop.run("xprop", "-id", str(alert), "_NET_WM_NAME",
                                    "_NET_WM_WINDOW_TYPE")
            self.assertRegex(said, r'(?s)= "orvanta".*_NET_WM_WINDOW_TYPE_DIALOG')
            self.desktop.activate(alert)
            self.desktop.press(key)
            self.assertEqual(self.orvanta.wait(), 1, key)
