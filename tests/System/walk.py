"""A person's random operations on the real program, under the sanitizers, on a virtual desktop.

walk.py [--build build/asan] [--seed 1] [--operations 2000]

With a panel, three applications, one of them a browser, and a log-in service that says when the
person is away. Whatever is done, the program goes on or ends with 0, its sanitizers find nothing,
its store stays sound, and no more is counted than time has passed. Fails otherwise, and says at
which operation. The seed gives the operations, not the moments at which they happen to be seen.
"""

import argparse
import os
import pathlib
import plistlib
import random
import signal
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / folder)
                for folder in ("desktop", "tests/Browser", "tests/BrowserHost")]

import browsers  # noqa: E402 (the path has just been set)
import desktop  # noqa: E402
import orvanta_end  # noqa: E402
import panels  # noqa: E402
import shell_case  # noqa: E402
import status_area  # noqa: E402
import test_away  # noqa: E402

KEYS = ("Tab", "Tab", "Tab", "shift+Tab", "Up", "Down", "Down", "Left", "Right", "space", "space",
        "Return", "Escape", "Home", "End", "Next", "Prior", "a", "s", "1", "BackSpace", "F4", "F10",
        "alt+Tab", "ctrl+w", "ctrl+m", "ctrl+a", "ctrl+c", "ctrl+comma", "ctrl+q", "Menu", "Alt_L")
# Not what would end the application that has the keyboard now and then.
ELSEWHERE = ("a", "s", "1", "Up", "Left", "space", "Return", "BackSpace", "alt+Tab")
HOSTS = ("alpha.test", "beta.test", "gamma.test")

CHECK_INTERVAL = 50  # operations


class Fault(Exception):
    """Something did not hold."""


class Walk(test_away.Away, shell_case.ShellTest):
    def __init__(self, seed, log):
        super().__init__("setUp")
        self._random = random.Random(seed)
        self._log = log
        self._is_set_up = seed % 3 != 0
        self._reasons = set()
        self.count = {}

    def setUp(self):
        super().setUp()
        self._sites = orvanta_end.Sites()
        self.addCleanup(self._sites.close)
        self._browser = browsers.Chromium(self.desktop, self._sites)
        self._browser.load_extension()
        if self._is_set_up:
            self.finish_setup()
        (self.configuration() / "com.brindlework.orvanta.automation.plist").write_bytes(
            plistlib.dumps({"agreed": ["chromium"], "allowed": ["chromium"]}))
        self._panel = panels.XfcePanel(self.desktop)
        self._panel.start()
        self._windows = {}
        for name in ("xterm", "mousepad", "chromium"):
            self._to_window(name)
        self._began = time.monotonic()
        self._start()
        self._item = self.wait_for_item(self._panel)
        self._look_for_popover()

    def _start(self):
        self.count["start"] = self.count.get("start", 0) + 1
        self.orvanta.start()
        # Being asked to end before it listens, it would end as any process does.
        desktop.wait_until(
            lambda: not self.orvanta.is_running() or panels.has_owner(
                self.desktop, shell_case.PREFERENCES.removesuffix(".plist")), "Orvanta")

    def _look_for_popover(self):
        if not self.popovers():
            self.click(self._item)
        self._popover = self.wait_for_popover()

    # What a person does.

    def _somewhere(self, area):
        left, top, width, height = area
        return (left + self._random.randrange(width), top + self._random.randrange(height))

    def _click_item(self):
        self.click(self._item)

    def _click_popover(self):
        button = 3 if self._random.random() < 0.1 else 1
        self.click(self._somewhere(self._popover), button)

    def _open_and_click(self):
        self.click(self._item)
        for _ in range(self._random.randrange(1, 5)):
            self._click_popover()

    def _hover(self):
        self.desktop.run("xdotool", "mousemove", *map(str, self._somewhere(self._popover)))

    def _wheel(self):
        place = self._somewhere(self._popover)
        status_area.click(self.desktop, place, self._random.choice((4, 5)))

    def _double_click(self):
        self.desktop.run("xdotool", "mousemove", *map(str, self._somewhere(self._popover)),
                         "click", "--repeat", "2", "--delay", "20", "1")

    def _use_menu(self):
        self.click(self._item, 3)
        time.sleep(0.1)
        keys = ["Down"] * self._random.randrange(1, 4)
        keys.append(self._random.choice(("Return", "Return", "Escape")))
        self.desktop.run("xdotool", "key", "--delay", "30", *keys)

    def _click_own_window(self):
        windows = self.own_windows()
        if not windows:
            self._use_menu()
            return
        window = self._random.choice(windows)
        said = self.desktop.run("xdotool", "getwindowgeometry", "--shell", str(window))
        place = dict(line.split("=") for line in said.split())
        area = [int(place[name]) for name in ("X", "Y", "WIDTH", "HEIGHT")]
        for _ in range(self._random.randrange(1, 6)):
            self.click(self._somewhere(area))
            self.desktop.press(self._random.choice(KEYS))

    def _press_keys(self):
        is_ours = self._random.random() < 0.7
        if is_ours:
            self.click(self._item)
        for _ in range(self._random.randrange(1, 8)):
            self.desktop.press(self._random.choice(KEYS[:24] if is_ours else ELSEWHERE))

    def _to_window(self, name):
        window = self._windows.get(name)
        if window not in self.desktop.windows():
            if name == "xterm":
                window = self.desktop.launch_xterm()
            elif name == "mousepad":
                window = self.desktop.launch_mousepad()
            else:
                self._browser.process = None
                window = self._browser.new_window(lambda: self._browser.open(
                    *(self._browser.address(host) for host in HOSTS)))
            self._windows[name] = window
            self.desktop.move(window, 400, 60 + 40 * len(name), 700, 400)
        else:
            self.desktop.run("xdotool", "windowactivate", str(window))

    def _switch(self):
        self._to_window(self._random.choice(("xterm", "mousepad", "chromium", "chromium")))

    def _use_browser(self):
        self._to_window("chromium")
        if self._random.random() < 0.3:
            self._sites.go(*self._random.sample(HOSTS, 2))
        else:
            self.desktop.press(f"ctrl+{self._random.randrange(1, 4)}")

    def _end_browser(self):
        process = self._browser.process
        process.send_signal(self._random.choice((signal.SIGTERM, signal.SIGKILL)))
        process.wait(orvanta_end.PATIENCE)
        desktop.wait_until(lambda: self._windows["chromium"] not in self.desktop.windows(),
                           "the end of the browser's window")
        if self._random.random() < 0.5:
            self._to_window("chromium")

    def _go_or_come(self):
        if self._reasons:
            self._come_back()
            return
        reason = self._random.choice((self.lock, self.switch_session, self.prepare_for_sleep,
                                      self.save_the_screen, self.blank_the_displays))
        reason("true")
        self._reasons.add(reason)

    def _come_back(self):
        for reason in self._reasons:
            reason("false")
        self._reasons.clear()

    def _rest(self):
        time.sleep(self._random.random() * 3)

    # What befalls the program.

    def _stall(self):
        self.orvanta.process.send_signal(signal.SIGSTOP)
        time.sleep(self._random.random() * 2)
        self.orvanta.process.send_signal(signal.SIGCONT)

    def _ask_to_end(self):
        self.orvanta.process.send_signal(signal.SIGTERM)
        self._expect_end()
        self._start()

    def _kill(self):
        self.kill()
        self._start()

    def _start_again(self):
        again = self.desktop.spawn([self.orvanta.executable])
        code = again.wait(desktop.DEADLINE)
        if code != 0:
            raise Fault(f"a second start ended with {code}")

    # What must hold.

    def _expect_end(self):
        code = self.orvanta.wait()
        if code != 0:
            raise Fault(f"Orvanta ended with {code}\n{self._sanitizers()}")

    def _check_process(self):
        if not self.orvanta.is_running():
            self._expect_end()  # A click on its button, or its key.
            self.count["left by the person"] = self.count.get("left by the person", 0) + 1
            self._start()

    def _sanitizers(self):
        return "\n".join(path.read_text(errors="replace") for path in sorted(self._log.iterdir()))

    def check(self):
        if found := self._sanitizers():
            raise Fault(found)
        sound = self.store.integrity()
        if sound != "ok":
            raise Fault(sound)
        counted, passed = self.store.total(), time.monotonic() - self._began
        if counted > passed:
            raise Fault(f"{counted:.1f} s counted while {passed:.1f} s passed")
        return counted, passed

    def walk(self, operations):
        things = ((self._click_item, 6), (self._click_popover, 12), (self._open_and_click, 18),
                  (self._hover, 6), (self._wheel, 4), (self._double_click, 2), (self._use_menu, 4),
                  (self._click_own_window, 10), (self._press_keys, 14), (self._switch, 8),
                  (self._use_browser, 5), (self._end_browser, 0.3), (self._go_or_come, 3),
                  (self._rest, 1), (self._stall, 1), (self._ask_to_end, 0.7), (self._kill, 0.7),
                  (self._start_again, 0.7))
        acts, weights = zip(*things)
        for number in range(operations):
            act = self._random.choices(acts, weights)[0]
            name = act.__name__.strip("_").replace("_", " ")
            self.count[name] = self.count.get(name, 0) + 1
            try:
                self._check_process()
                try:
                    act()
                except (desktop.DesktopError, ProcessLookupError, AssertionError):
                    # A window may go while it is aimed at, and the program end by the last click.
                    self._check_process()
                    self.count["missed"] = self.count.get("missed", 0) + 1
                if number % CHECK_INTERVAL == 0:
                    self.check()
            except (Fault, desktop.DesktopError) as fault:
                raise Fault(f"operation {number}, {name}: {fault}") from fault
        self._check_process()
        self._come_back()
        self.orvanta.process.send_signal(signal.SIGTERM)
        self._expect_end()
        return self.check()  # With what the sanitizers say of leaks at the end.


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build" / "asan")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--operations", type=int, default=2000)
    arguments = parser.parse_args()
    build = arguments.build.absolute()
    os.environ.update(
        ORVANTA_EXECUTABLE=str(build / "orvanta"),
        ORVANTA_BROWSER_HOST=str(build / "orvanta-browser-host"),
        ORVANTA_BROWSER_INSTALLATION=str(build / "browser-installation"),
        ORVANTA_PACKAGES=str(build / "browser"))
    with tempfile.TemporaryDirectory(prefix="orvanta-walk-") as folder:
        log = pathlib.Path(folder)
        os.environ["ASAN_OPTIONS"] = f"detect_leaks=1:log_path={log}/address"
        os.environ["UBSAN_OPTIONS"] = f"print_stacktrace=1:log_path={log}/undefined"
        walk = Walk(arguments.seed, log)
        try:
            walk.setUp()
            counted, passed = walk.walk(arguments.operations)
        except (Fault, desktop.DesktopError) as fault:
            print(f"seed {arguments.seed}: {fault}", file=sys.stderr)
            return 1
        finally:
            walk.doCleanups()
            print(", ".join(f"{name} {times}" for name, times in sorted(walk.count.items())))
    print(f"seed {arguments.seed}: {arguments.operations} operations, "
          f"{counted:.1f} s counted while {passed:.1f} s passed, nothing found")
    return 0


if __name__ == "__main__":
    sys.exit(main())
