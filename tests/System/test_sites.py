"""Real browsers in front of the whole application: the time goes to the site of the active tab."""

import collections
import contextlib
import json
import os
import pathlib
import signal
import subprocess
import sys
import time

import browsers
import case
import desktop
import orvanta_end

ALPHA, BETA, GAMMA = "site:alpha.test", "site:beta.test", "site:gamma.test"
BROWSER = pathlib.Path(__file__).parents[2] / "browser"
PATIENCE = orvanta_end.PATIENCE


class Scenarios:
    """The same for every browser; `browser_class` and `identifier` say which. One that takes
    packages gets the extension from Orvanta, another has it loaded as a person would by hand."""

    def setUp(self):
        super().setUp()
        self.pages = orvanta_end.Sites()
        self.addCleanup(self.pages.close)
        self.browser = self.browser_class(self.desktop, self.pages)
        self.visits = collections.Counter()

    def start_with_site(self, is_prepared):
        """With one site in front that counts."""
        if is_prepared:
            self.browser.load_extension()
        self.start()
        self.open_browser("alpha.test", "beta.test")
        self.agree()
        if not is_prepared:
            # Orvanta has put into the browser what it needs, and says that it must be restarted.
            desktop.wait_until(lambda: self.decisions().get("agreed") == [self.identifier],
                               "the decision")
            self.desktop.press("space")
            desktop.wait_until(lambda: not self.own_windows(), "the end of the question")
            self.restart_browser("alpha.test", "beta.test")
        desktop.wait_until(lambda: self.decisions().get("allowed") == [self.identifier],
                           "the connection", PATIENCE)
        self.desktop.activate(self.window)
        self.wait_to_count(ALPHA)

    def open_browser(self, *hosts):
        self.window = self.browser.new_window(
            lambda: self.browser.open(*map(self.browser.address, hosts)))

    def restart_browser(self, *hosts):
        self.browser.process.terminate()
        self.browser.process.wait(PATIENCE)
        desktop.wait_until(lambda: self.host() is None, "the host's end", PATIENCE)
        self.browser.process = None
        self.open_browser(*hosts)

    def host(self):
        """The process that the browser started."""
        for children in pathlib.Path(f"/proc/{self.browser.process.pid}/task").glob("*/children"):
            for child in children.read_text().split():
                if "orvanta-browser-host" in pathlib.Path(f"/proc/{child}/cmdline").read_text():
                    return int(child)
        return None

    def spend(self, key, window=None):
        """With this window in front, all time is this key's."""
        if window:
            self.desktop.activate(window)
        self.count(key)
        time.sleep(3)
        self.count(None)
        self.visits[key] += 1

    def until_shown(self, title, act):
        """Acts until the tab or the page is there: a browser that has just come to the front may
        not listen, and a page that was left by a restart may take the order."""
        def is_shown():
            act()
            with contextlib.suppress(desktop.DesktopError):
                return desktop.wait_until(
                    lambda: self.desktop.title(self.window).startswith(title), title, 2)
        desktop.wait_until(is_shown, title, PATIENCE)

    def open_another(self, option, host):
        """Another window, with its page. Meanwhile the one before it may count on."""
        window = self.browser.new_window(
            lambda: self.browser.open(option, self.browser.address(host)))
        desktop.wait_until(lambda: self.desktop.title(window).startswith(host), host, PATIENCE)
        return window

    def test_the_time_goes_to_the_site_in_front(self):
        # Meanwhile nothing but sockets of this machine is opened.
        trace = self.desktop.folder / "sockets"
        self.orvanta.under = ["strace", "--daemonize", "--follow-forks", "--seccomp-bpf",
                              "--trace=socket,connect", f"--output={trace}"]
        self.start_with_site(is_prepared=True)
        first = self.window
        terminal = self.desktop.launch_xterm()
        self.wait_to_count(case.XTERM)
        before, began = self.store.session_seconds(), time.monotonic()
        self.spend(ALPHA, first)
        self.until_shown("beta.test", lambda: self.desktop.press(self.browser.tab.format(2)))
        self.spend(BETA)
        self.until_shown("gamma.test", lambda: self.pages.go(
            "beta.test", self.browser.address("gamma.test")))
        self.spend(GAMMA)
        self.spend(case.XTERM, terminal)

        # Windows, another profile, and one of which nothing is told. A window that had no site when
        # it came to the front is asked again after two, four, eight seconds.
        second = self.open_another("--new-window", "beta.test")
        self.wait_to_count(BETA)
        self.spend(BETA)
        self.spend(GAMMA, first)
        if self.another_profile:
            self.open_another(self.another_profile, "alpha.test")
            self.wait_to_count(ALPHA)
            self.spend(ALPHA)
            self.spend(BETA, second)
        self.open_another(self.browser.private_window, "secret.test")
        self.assert_nothing_counts()
        self.desktop.activate(first)
        self.wait_to_count(GAMMA)
        self.spend(GAMMA)

        # By hand: from outside it would open in the window that was last in front a moment ago.
        def enter():
            self.desktop.press("ctrl+l")
            self.desktop.type_line(self.internal_page)

        self.until_shown(self.internal_title, enter)
        self.assert_nothing_counts()  # At a page of the browser's own.
        self.ask_to_end()
        gained = self.gained_since(before)
        print({key: f"{gained.get(key, 0):.2f} of {due}" for key, due in self.due.items()})
        self.assertEqual(set(gained), set(self.due))
        for key, due in self.due.items():
            self.assertGreaterEqual(gained[key], due - case.TOLERANCE * self.visits[key], key)
        passed = time.monotonic() - began
        sockets = [line for line in trace.read_text().splitlines() if "socket(" in line]
        self.assertTrue(sockets)
        self.assertEqual([line for line in sockets if "socket(AF_UNIX" not in line], [])
        self.assertLessEqual(sum(gained.values()), passed - 2 * case.SAVE_INTERVAL)

    def assert_silent(self):
        """Whatever tab is in front, not a byte passes through the host."""

        def passed():
            lines = pathlib.Path(f"/proc/{self.host()}/io").read_text().splitlines()
            return [line for line in lines if line.startswith(("rchar", "wchar"))]

        time.sleep(1)  # Orvanta's own word has come.
        before = passed()
        self.desktop.activate(self.window)
        for tab, host in ((2, "beta.test"), (1, "alpha.test")):
            self.until_shown(host, lambda tab=tab: self.desktop.press(self.browser.tab.format(tab)))
        time.sleep(1)
        self.assertEqual(passed(), before)

    def test_nothing_is_told_that_the_person_did_not_agree_to(self):
        self.browser.load_extension()
        self.start()
        self.open_browser("alpha.test", "beta.test")
        desktop.wait_until(self.own_windows, "the question", PATIENCE)
        desktop.wait_until(self.host, "the host", PATIENCE)
        self.assert_silent()
        self.agree()
        self.desktop.activate(self.window)
        self.wait_to_count(ALPHA)

        self.ask_to_end()
        self.prefer(".automation", refused=[self.identifier])
        self.start()
        self.assert_silent()

    def test_the_connection_comes_back(self):
        self.start_with_site(is_prepared=not self.takes_packages)
        host = self.host()
        os.kill(host, signal.SIGKILL)
        desktop.wait_until(lambda: self.host() not in (None, host), "another host", PATIENCE)
        self.wait_to_count(ALPHA)

        host = self.host()
        self.ask_to_end()
        self.start()
        self.wait_to_count(ALPHA)
        self.assertEqual(self.host(), host)

        # Frozen when it comes to the front, it has no site until it moves again.
        self.desktop.launch_xterm()
        self.wait_to_count(case.XTERM)
        before = self.store.session_seconds()
        self.browser.process.send_signal(signal.SIGSTOP)
        self.desktop.activate(self.window)
        time.sleep(4)
        self.browser.process.send_signal(signal.SIGCONT)
        self.wait_to_count(ALPHA)
        self.assertLess(self.gained_since(before).get(case.XTERM, 0), 2)

        self.restart_browser("gamma.test")
        self.wait_to_count(GAMMA)


class Chromium(Scenarios, case.SystemTest):
    browser_class = browsers.Chromium
    identifier = "chromium"
    takes_packages = True
    another_profile = "--profile-directory=Another"
    internal_page, internal_title = "chrome://version", "About Version"

    def test_a_newer_package_takes_the_place_of_the_one_before(self):
        profile = self.configuration() / "chromium"
        entry = profile / "External Extensions" / f"{browsers.CHROMIUM_ID}.json"
        entry.parent.mkdir()
        for version in ("0.1.0", "0.1.1"):
            output = self.desktop.folder / version
            subprocess.run([sys.executable, "-B", BROWSER / "pack.py",
                            BROWSER / "development-key.pem", BROWSER / "extension", version, output],
                           check=True)
            entry.write_text(json.dumps({"external_crx": str(output / "orvanta.crx"),
                                         "external_version": version}))
            installed = profile / "Default" / "Extensions" / browsers.CHROMIUM_ID / f"{version}_0"
            self.browser.open(self.browser.address("alpha.test"))
            desktop.wait_until(installed.is_dir, installed.name, PATIENCE)
            self.browser.process.terminate()
            self.browser.process.wait(PATIENCE)
            self.browser.process = None


class Firefox(Scenarios, case.SystemTest):
    browser_class = browsers.Firefox
    identifier = "firefox-esr"
    takes_packages = False  # Not without its maker's signature.
    another_profile = None  # Is another process, and so another browser.
    internal_page, internal_title = "about:license", "Licenses"
