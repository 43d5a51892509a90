"""How Orvanta starts and ends: once and again, and when the desktop ends or is not there."""

import signal
import time

import case
import desktop


class Ends(case.SystemTest):
    def test_many_starts_leave_one_that_books_its_last_stretch(self):
        self.desktop.launch_xterm()
        self.count(case.XTERM, self.start())
        self.start_again()
        self.wait_until_something_is_unsaved()
        self.ask_to_end()
        self.assert_due()

        others = [desktop.Orvanta(self.desktop, self.orvanta.executable) for _ in range(5)]
        for each in others:
            each.start()
        desktop.wait_until(lambda: sum(each.is_running() for each in others) == 1,
                           "the end of all but one")
        # However early they came, the one that was first has answered them.
        self.assertEqual(sorted(each.process.poll() or 0 for each in others), [0] * 5)
        self.wait_to_count(case.XTERM)

        # One that hangs keeps its store.
        hanging = next(each for each in others if each.is_running())
        hanging.process.send_signal(signal.SIGSTOP)
        self.orvanta.start()
        self.assertEqual(self.orvanta.wait(10), 1)
        self.assertIn("não respondeu", self.orvanta.complaints())
        hanging.process.kill()
        self.start()
        self.wait_to_count(case.XTERM)

    def test_nothing_is_counted_without_a_window_manager_or_a_window(self):
        mousepad = self.desktop.launch_mousepad()
        xterm = self.desktop.launch_xterm()
        self.count(case.XTERM, self.start())
        time.sleep(3)
        self.desktop.window_manager.kill()
        self.desktop.window_manager.wait()
        self.count(None)
        time.sleep(3)
        self.desktop.start_window_manager()
        self.count(case.MOUSEPAD, self.desktop.activate(mousepad))
        time.sleep(3)
        self.count(case.XTERM, self.desktop.activate(xterm))
        time.sleep(2)
        self.desktop.close_windows()
        self.count(None)
        time.sleep(3)
        self.ask_to_end()
        self.assert_due()

    def test_the_display_vanishing_ends_it_with_everything_saved(self):
        self.prefer(setupDoneV1=True)
        self.desktop.launch_xterm()
        self.count(case.XTERM, self.start())
        self.start_again()  # Nothing here shows a status item, so that opens the panel.
        self.wait_until_something_is_unsaved()
        self.desktop.run("xdotool", "key", "Menu", "Down")
        self.desktop.server.terminate()
        self.desktop.server.wait()
        self.count(None)
        self.assertGreaterEqual(self.orvanta.wait(5), 0, "ended by a signal")
        self.assert_due()

    def test_without_a_display_or_a_store_it_says_so_and_fails(self):
        display = self.desktop.environment.pop("DISPLAY")
        self.orvanta.start()
        self.assertEqual(self.orvanta.wait(), 1)
        self.assertRegex(self.orvanta.complaints(), r"^[^\n]*ambiente gráfico[^\n]*\.$")

        (self.desktop.folder / "a-file").touch()
        self.desktop.environment |= {"DISPLAY": display,
                                     "XDG_DATA_HOME": str(self.desktop.folder / "a-file")}
        for key in ("Return", "Escape"):
            self.orvanta.start()
            alert = desktop.wait_until(self.own_windows, "an alert")[0]
            # Its text is painted, so all that can be seen of it from here is that it is an alert.
            self.assertIn("_NET_WM_WINDOW_TYPE_DIALOG", self.desktop.run(
                "xprop", "-id", str(alert), "_NET_WM_WINDOW_TYPE"))
            self.desktop.activate(alert)
            self.desktop.press(key)
            self.assertEqual(self.orvanta.wait(), 1, key)
