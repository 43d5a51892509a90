"""Real browsers in front of the whole application: the time goes to the site of the active tab."""

import collections
import contextlib
import os
import pathlib
import plistlib
import signal
import time

import browsers
import case
import desktop
import orvanta_end

ALPHA, BETA, GAMMA = "site:alpha.test", "site:beta.test", "site:gamma.test"
PATIENCE = orvanta_end.PATIENCE


class Scenarios:
    """The same for every browser; `browser_class` and `identifier` say which. One that takes packages
    gets the extension from Orvanta, into another it is loaded as a person would by hand."""

    def setUp(self):
        super().setUp()
        self.pages = orvanta_end.Sites()
        self.addCleanup(self.pages.close)
        self.browser = self.browser_class(self.desktop, self.pages)
        self.due = collections.Counter()
        self.slack = collections.Counter()

    def address(self, host):
        return self.browser.address(host)

    def decisions(self):
        path = (pathlib.Path(self.desktop.environment["XDG_CONFIG_HOME"])
                / "com.brindlework.orvanta.automation.plist")
        return plistlib.loads(path.read_bytes()) if path.exists() else {}

    def agree(self):
        """Answers the question that Orvanta puts, as a person with a keyboard does."""
        question = desktop.wait_until(
            lambda: self.desktop.windows_of(self.orvanta.process.pid), "the question", PATIENCE)[0]
        self.desktop.activate(question)
        self.desktop.press("space")
        desktop.wait_until(lambda: self.identifier in str(self.decisions()), "the decision")
        if self.is_prepared:
            return
        # Orvanta has put into the browser what it needs, and says that it must be restarted.
        self.assertEqual(self.decisions()["agreed"], [self.identifier])
        self.desktop.press("space")
        desktop.wait_until(lambda: not self.desktop.windows_of(self.orvanta.process.pid),
                           "the end of the question")
        self.restart_browser("alpha.test", "beta.test")

    def restart_browser(self, *hosts):
        self.browser.process.terminate()
        self.browser.process.wait(PATIENCE)
        desktop.wait_until(lambda: self.host() is None, "the host's end", PATIENCE)
        self.browser.process = None
        self.open_browser(*hosts)

    def counted(self):
        return {key: seconds for key, seconds in self.store.session_seconds().items() if seconds}

    def begin(self, key):
        """Waits until this is what counts, as far as it has been saved."""
        before = self.counted().get(key, 0)
        desktop.wait_until(lambda: self.counted().get(key, 0) > before, f"{key} to count", PATIENCE)

    def spend(self, key, act=lambda: None, seconds=4, late=0.0):
        """After `act`, all time is this key's (or nobody's), at most so many seconds late."""
        act()
        time.sleep(seconds)
        if key:
            self.due[key] += seconds
            self.slack[key] += case.TOLERANCE + late
        else:
            self.slack[None] += case.TOLERANCE

    def end(self):
        self.assertEqual(self.orvanta.ask_to_end()[1], 0)

    def count_a_terminal(self):
        """From here on `assert_counted` looks at what is gained."""
        terminal = self.desktop.launch_xterm()
        self.begin(case.XTERM)
        self.start_of_count = self.counted()
        return terminal

    def assert_counted(self):
        now = self.counted()
        gained = {key: now[key] - self.start_of_count.get(key, 0) for key in now}
        print({key: f"{gained.get(key, 0):.2f} of {due}" for key, due in self.due.items()})
        self.assertLessEqual({key for key, seconds in gained.items() if seconds > 0.01},
                             set(self.due))
        for key, due in self.due.items():
            self.assertGreaterEqual(gained.get(key, 0), due - self.slack[key], key)
        # What is slow to be seen at one's end is late at the next one's beginning.
        self.assertLessEqual(sum(gained.values()),
                             sum(self.due.values()) + self.slack[None] + case.TOLERANCE)

    def show(self, tab, title):
        """Presses until the tab is there: a browser that has just come to the front may not listen."""
        def shown():
            self.desktop.press(self.browser.tab(tab))
            return self.desktop.title(self.window).startswith(title)
        desktop.wait_until(shown, f"the tab of {title}", PATIENCE, every=0.3)

    def go(self, from_host, to_host):
        """Navigates until it is there: a page that was left by a restart may take the order."""
        def there():
            self.pages.go(from_host, self.address(to_host))
            with contextlib.suppress(desktop.DesktopError):
                return desktop.wait_until(
                    lambda: self.desktop.title(self.window).startswith(to_host), "the page", 2)
        desktop.wait_until(there, to_host, PATIENCE)

    def open_another(self, option, host):
        """Meanwhile the window before it may count on."""
        begun = time.monotonic()
        window = self.browser.new_window(
            lambda: self.browser.open(option, self.address(host)))
        self.slack[None] += time.monotonic() - begun
        return window

    def open_browser(self, *hosts):
        self.window = self.browser.new_window(
            lambda: self.browser.open(*(self.address(host) for host in hosts)))

    def start(self, *hosts, is_prepared):
        self.is_prepared = is_prepared
        if is_prepared:
            self.browser.load_extension()
        self.orvanta.start()
        self.open_browser(*hosts)
        self.agree()
        desktop.wait_until(lambda: self.decisions().get("allowed") == [self.identifier],
                           "the connection", PATIENCE)

    def test_the_time_goes_to_the_site_in_front(self):
        self.start("alpha.test", "beta.test", is_prepared=not self.takes_packages)
        self.desktop.activate(self.window)
        self.begin(ALPHA)
        terminal = self.count_a_terminal()

        self.spend(ALPHA, lambda: self.desktop.activate(self.window))
        self.show(2, "beta.test")
        self.spend(BETA)
        self.go("beta.test", "gamma.test")
        self.spend(GAMMA)
        self.spend(case.XTERM, lambda: self.desktop.activate(terminal))
        self.spend(GAMMA, lambda: self.desktop.activate(self.window))

        self.browser.new_window(lambda: self.browser.open(
            self.browser.private_window, self.address("secret.test")))
        self.spend(None)
        # A browser that had no site is asked again after two, four, eight seconds.
        self.spend(GAMMA, lambda: self.desktop.activate(self.window), seconds=10, late=8)
        self.end()
        self.assert_counted()

    def test_every_window_and_profile_has_its_site(self):
        self.start("alpha.test", is_prepared=True)
        first = self.window
        self.desktop.activate(first)
        self.begin(ALPHA)
        terminal = self.count_a_terminal()

        self.spend(ALPHA, lambda: self.desktop.activate(first))
        second = self.open_another("--new-window", "beta.test")
        self.spend(BETA, late=1)
        self.spend(ALPHA, lambda: self.desktop.activate(first))
        if self.another_profile:
            self.open_another(self.another_profile, "gamma.test")
            # Its extension has yet to start.
            self.spend(GAMMA, seconds=10, late=9)
            self.spend(ALPHA, lambda: self.desktop.activate(first))
            self.spend(BETA, lambda: self.desktop.activate(second))
        self.spend(case.XTERM, lambda: (self.desktop.activate(terminal), self.desktop.run(
            "xdotool", "windowminimize", str(first), "windowminimize", str(second))))

        self.desktop.activate(first)
        asked = time.monotonic()
        # By hand: from outside it would open in the window that was last in front a moment ago.
        self.desktop.press("ctrl+l")
        self.desktop.type_line(self.internal_page)
        desktop.wait_until(lambda: not self.desktop.title(first).startswith("alpha.test"),
                           "the internal page", PATIENCE)
        time.sleep(2)
        self.slack[None] += time.monotonic() - asked
        before = self.counted()
        time.sleep(6)  # More than until the next save.
        self.assertEqual(self.counted(), before, "at a page of the browser's own nothing counts")
        self.end()
        self.assert_counted()

    def test_the_connection_comes_back(self):
        self.start("alpha.test", is_prepared=True)
        self.desktop.activate(self.window)
        self.begin(ALPHA)

        host = self.host()
        os.kill(host, signal.SIGKILL)
        desktop.wait_until(lambda: self.host() not in (None, host), "another host", PATIENCE)
        self.begin(ALPHA)

        host = self.host()
        self.end()
        self.orvanta.start()
        self.begin(ALPHA)
        self.assertEqual(self.host(), host)

        # Frozen when it comes to the front, it has no site until it moves again.
        self.count_a_terminal()
        self.browser.process.send_signal(signal.SIGSTOP)
        self.spend(None, lambda: self.desktop.activate(self.window), seconds=5)
        self.browser.process.send_signal(signal.SIGCONT)
        self.begin(ALPHA)
        self.assertLess(self.counted()[case.XTERM] - self.start_of_count[case.XTERM], 2)

        self.restart_browser("gamma.test")
        self.begin(GAMMA)
        self.end()

    def host(self):
        """The process that the browser started."""
        for children in pathlib.Path(f"/proc/{self.browser.process.pid}/task").glob("*/children"):
            for child in children.read_text().split():
                if "orvanta-browser-host" in pathlib.Path(f"/proc/{child}/cmdline").read_text():
                    return int(child)
        return None


class Chromium(Scenarios, case.SystemTest):
    browser_class = browsers.Chromium
    identifier = "chromium"
    takes_packages = True
    another_profile = "--profile-directory=Another"
    internal_page = "chrome://version"


class Firefox(Scenarios, case.SystemTest):
    browser_class = browsers.Firefox
    identifier = "firefox-esr"
    takes_packages = False  # Not without its maker's signature.
    another_profile = None  # Is another process, and so another browser.
    internal_page = "about:license"
