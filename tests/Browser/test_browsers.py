"""What Orvanta hears of a real browser while a person uses it."""

import os
import signal
import unittest

import browsers
import desktop
import orvanta_end

ALPHA, BETA, GAMMA, DELTA = (f"http://{name}.test" for name in ("alpha", "beta", "gamma", "delta"))


class Scenarios:
    """The same for every browser; `browser_class` says which."""

    def setUp(self):
        self.sites = orvanta_end.Sites()
        self.addCleanup(self.sites.close)
        self.place = desktop.Desktop()
        self.addCleanup(self.place.close)
        self.place.open()
        self.orvanta = orvanta_end.OrvantaEnd(self.place.environment["XDG_RUNTIME_DIR"])
        self.addCleanup(self.orvanta.close)
        self.browser = self.browser_class(self.place, self.sites)

    def address(self, host):
        return self.browser.address(host)

    def start(self, *hosts):
        """The browser's first window, in front, and its connection."""
        self.browser.load_extension()
        window = self.browser.new_window(
            lambda: self.browser.open(*(self.address(host) for host in hosts)))
        connection = self.orvanta.wait_for_connection([])
        self.expect(connection, f"http://{hosts[0]}", True)
        return window, connection

    def quit(self, has_gone=lambda: True):
        def close_window():
            self.place.press("ctrl+shift+w")

        close_window()
        self.orvanta.wait_until(lambda: self.browser.process.poll() is not None and has_gone(),
                                "the browser's end", remind=close_window)
        self.browser.process = None

    def expect(self, connection, origin, focused, remind=None):
        """Told without a question, and the answer to one is the same."""
        self.orvanta.wait_for_state(connection, origin, focused, remind)
        self.assertEqual(self.orvanta.answer(connection), (origin, focused))

    def press_until(self, key, connection, origin):
        self.place.press(key)
        self.expect(connection, origin, True, remind=lambda: self.place.press(key))

    def go(self, from_host, to_host):
        self.sites.go(from_host, self.address(to_host))

    def expect_when_asked(self, connection, origin, focused):
        """For what a browser need not tell by itself."""
        self.orvanta.wait_until(lambda: self.orvanta.answer(connection) == (origin, focused),
                                f"{origin}, {focused}")

    def assert_told_scheme_and_host_alone(self):
        for connection in self.orvanta.connections:
            for message in connection.messages:
                self.assertLessEqual(set(message), {"v", "origin", "focused", "answer"})
                self.assertEqual(message["v"], 1)
                self.assertRegex(message["origin"] or ALPHA, r"^http://[a-z]+\.test$")

    def test_the_site_of_the_active_tab_is_told_when_it_changes(self):
        _, connection = self.start("alpha.test", "beta.test")
        self.assertEqual(connection.browser_pid, self.browser.process.pid)
        self.press_until(self.browser.tab(2), connection, BETA)
        self.press_until(self.browser.tab(1), connection, ALPHA)
        self.go("alpha.test", "gamma.test")
        self.expect(connection, GAMMA, True)
        self.sites.wander("gamma.test", self.address("delta.test"))
        self.expect(connection, DELTA, True)
        self.press_until("ctrl+t", connection, None)  # The browser's own page for a new tab.
        self.press_until(self.browser.tab(2), connection, BETA)
        self.place.press("ctrl+w")
        self.orvanta.wait_until(lambda: connection.state[0] != BETA, "the tab's end")
        self.assert_told_scheme_and_host_alone()
        unasked = [message["origin"] for message in connection.messages if "answer" not in message]
        self.assertTrue(all(one != other for one, other in zip(unasked, unasked[1:])), unasked)
        # Firefox shows an empty page for a moment on the way to another host.
        self.assertEqual([origin for origin in unasked if origin][:6],
                         [ALPHA, BETA, ALPHA, GAMMA, DELTA, BETA])

    def test_the_window_in_front_counts_and_only_while_it_is_in_front(self):
        first, connection = self.start("alpha.test")
        second = self.browser.new_window(
            lambda: self.browser.open("--new-window", self.address("beta.test")))
        self.expect(connection, BETA, True)
        self.place.activate(first)
        self.expect(connection, ALPHA, True)

        terminal = self.place.launch_xterm()
        self.expect_when_asked(connection, ALPHA, False)
        self.place.activate(first)
        self.expect_when_asked(connection, ALPHA, True)
        self.place.activate(terminal)
        self.expect_when_asked(connection, ALPHA, False)
        self.place.activate(second)
        self.expect(connection, BETA, True)

        self.place.activate(terminal)
        self.place.run("xdotool", "windowminimize", str(second), "windowminimize", str(first))
        self.place.run("xdotool", "windowkill", str(terminal))
        self.orvanta.wait_until(lambda: not self.orvanta.answer(connection)[1], "no window in front")
        self.place.activate(second)
        self.expect_when_asked(connection, BETA, True)
        self.assert_told_scheme_and_host_alone()

    def test_of_a_private_window_nothing_is_told_but_that_it_is_none_of_ours(self):
        first, connection = self.start("alpha.test")
        private = self.browser.new_window(
            lambda: self.browser.open(self.browser.private_window, self.address("secret.test")))
        self.orvanta.wait_until(lambda: connection.state and not connection.state[1],
                                "the loss of the focus")
        desktop.wait_until(lambda: "secret.test" in self.place.title(private), "the private page",
                           orvanta_end.PATIENCE)
        self.assertFalse(self.orvanta.answer(connection)[1])
        self.place.activate(first)
        self.expect(connection, ALPHA, True)
        self.assertEqual(len(self.orvanta.connections), 1)
        self.assertNotIn("secret", str(connection.messages))
        self.assert_told_scheme_and_host_alone()

    def test_the_connection_comes_back_and_ends_with_the_browser(self):
        _, connection = self.start("alpha.test")
        hosts = [connection.host_pid]

        os.kill(connection.host_pid, signal.SIGKILL)
        connection = self.orvanta.wait_for_connection([connection])
        self.expect(connection, ALPHA, True)
        hosts.append(connection.host_pid)
        self.assertNotEqual(*hosts)

        for leave_name, here, there in ((False, "alpha", "beta"), (True, "beta", "gamma")):
            self.orvanta.close(leave_name)
            self.go(f"{here}.test", f"{there}.test")
            self.orvanta.listen()
            connection = self.orvanta.wait_for_connection([])
            self.expect(connection, f"http://{there}.test", True)
            self.assertEqual(connection.host_pid, hosts[-1])

        self.quit(lambda: not connection.is_open)
        for host in hosts:
            self.assertFalse(os.path.exists(f"/proc/{host}/exe"), "a host outlives its browser")
        self.assert_told_scheme_and_host_alone()


class Chromium(Scenarios, unittest.TestCase):
    browser_class = browsers.Chromium

    def test_each_profile_is_a_connection_of_the_same_browser(self):
        first, connection = self.start("alpha.test")
        second = self.browser.new_window(lambda: self.browser.open(
            "--profile-directory=Another", self.address("beta.test")))
        another = self.orvanta.wait_for_connection([connection])
        self.expect(another, BETA, True)
        self.expect_when_asked(connection, ALPHA, False)
        for window, mine, site, other in ((first, connection, ALPHA, another),
                                          (second, another, BETA, connection)):
            heard = len(mine.messages)
            self.place.activate(window)
            self.orvanta.wait_until(lambda: len(mine.messages) > heard, "the window's return")
            self.expect(mine, site, True)
            self.orvanta.wait_until(lambda: not self.orvanta.answer(other)[1], "the other's loss")
        self.assertEqual(another.browser_pid, connection.browser_pid)
        self.assertNotEqual(another.host_pid, connection.host_pid)

    def test_what_orvanta_installs_works_from_the_next_start_until_it_is_removed(self):
        def hears_the_site():
            return any(one.state == (ALPHA, True) for one in self.orvanta.open_connections())

        self.open_until(lambda: True)
        self.browser.prepare("install")
        for _ in range(2):
            self.open_until(hears_the_site)
            self.assertTrue(self.browser.is_installed())
        self.browser.prepare("remove")
        self.open_until(lambda: not self.browser.is_installed())
        self.assertEqual(len(self.orvanta.connections), 2)

    def open_until(self, condition):
        """Starts the browser and quits it when the condition holds."""
        self.browser.new_window(lambda: self.browser.open(self.address("alpha.test")))
        self.orvanta.wait_until(condition, "what is installed")
        self.quit(lambda: not self.orvanta.open_connections())


class Firefox(Scenarios, unittest.TestCase):
    browser_class = browsers.Firefox


if __name__ == "__main__":
    desktop.end_on_signals()
    unittest.main(verbosity=2)
