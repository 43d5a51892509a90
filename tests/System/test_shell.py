"""The application's shell on a real desktop: what clicks, keys and starts open and close."""

import re
import time

import case
import desktop
import panels
import shell_case

WIDTH, HEIGHT = 320, 352
WATCHER = ("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
           "org.kde.StatusNotifierWatcher", "RegisteredStatusNotifierItems")


class Shell(shell_case.ShellTest):
    def setUp(self):
        super().setUp()
        self.finish_setup()

    def click_item(self, position):
        """And waits until it was told: what is told late is another click than the one that closed."""
        self.click(position)
        if panels.has_owner(self.desktop, WATCHER[0]):
            self.desktop.read(*WATCHER)
            self.read_item("Title")

    def read_item(self, name):
        return self.desktop.read(f"org.kde.StatusNotifierItem-{self.orvanta.process.pid}-1",
                                 "/StatusNotifierItem", "org.kde.StatusNotifierItem", name)

    def assert_toggles(self, item, elsewhere=(600, 300)):
        """Whatever is clicked in whichever order, one popover or none."""
        self.click_item(item)
        self.wait_for_popover()
        self.click_item(item)
        self.wait_for_no_popover()
        self.click_item(item)
        place = self.wait_for_popover()
        self.click((place[0] + 20, place[1] + 20))
        self.assertEqual(self.only_popover(), place, "a click into it")
        self.click(elsewhere)
        self.wait_for_no_popover()
        for _ in range(5):  # An odd number leaves it open.
            self.click_item(item)
        self.wait_for_popover()
        self.desktop.press("Escape")
        self.wait_for_no_popover()

    def choose(self, item, *keys):
        """In the item's menu."""
        before = set(self.shown(""))
        self.click(item, 3)
        desktop.wait_until(lambda: set(self.shown("")) - before, "the menu")
        # It takes the keyboard just after it has come up, and nothing shows that it has.
        time.sleep(0.5)
        self.desktop.run("xdotool", "key", *keys, "Return")

    def test_a_click_in_the_panel_opens_the_popover_and_any_other_closes_it(self):
        mousepad = self.desktop.launch_mousepad()
        item = self.start_with_panel()
        began = time.monotonic()
        self.assert_toggles(item)

        # Keys are the popover's, but what switches windows is not.
        self.click(item)
        self.wait_for_popover()
        pressed = time.monotonic()
        self.desktop.run("xdotool", "keydown", "Alt_L", "key", "Tab", "keyup", "Alt_L")
        self.wait_for_no_popover()
        self.wait_for_front(mousepad)
        changed = time.monotonic()
        self.click(item)
        self.wait_for_popover()
        returned = self.desktop.activate(self.terminal)
        self.wait_for_no_popover()

        # A right click closes it, and the menu does what it says.
        self.click(item)
        self.wait_for_popover()
        self.choose(item, "Up", "Up")
        self.wait_for_no_popover()
        settings = desktop.wait_until(self.own_windows, "the settings")[0]
        self.wait_for_front(settings)
        # Neither popover nor menu took anything from the application behind them.
        counted, ended = self.store.session_seconds(), time.monotonic()
        self.assertGreaterEqual(counted[case.MOUSEPAD], returned - changed - case.TOLERANCE)
        self.assertLessEqual(counted[case.MOUSEPAD], returned - pressed + case.TOLERANCE)
        self.assertAlmostEqual(counted[case.XTERM] + counted[case.MOUSEPAD], ended - began,
                               delta=2 * case.TOLERANCE + 3)

        # The settings are a window that comes back when started again, unless it was closed.
        self.assertEqual(self.desktop.title(settings), "Ajustes do orvanta")
        self.assertNotIn("SKIP_TASKBAR", self.desktop.run("xprop", "-id", str(settings),
                                                          "_NET_WM_STATE"))
        for hide in ("ctrl+m", "ctrl+h"):
            self.desktop.press(hide)
            self.wait_for_front(self.terminal)
            self.start_again()
            self.wait_for_front(settings)
        self.desktop.press("ctrl+w")
        self.wait_for_front(self.terminal)
        self.assertEqual((self.own_windows(), self.popovers()), ([], []))
        self.ask_to_end()

    def test_without_a_panel_in_a_tray_and_moving_between_both(self):
        self.desktop.launch_xterm()
        self.start()
        self.assertEqual(self.popovers(), [])
        self.start_again()
        self.wait_for_popover()
        self.start_again()
        self.only_popover()
        self.click((300, 300))
        self.wait_for_no_popover()

        tray, panel = panels.EmbeddingTray(self.desktop), panels.XfcePanel(self.desktop)
        tray.start()
        self.assert_toggles(self.wait_for_item(tray))
        panel.start()
        self.wait_for_item(panel)
        self.wait_for_no_item(tray)
        self.assertEqual(re.findall(r"'([^']*)'", self.desktop.read(*WATCHER)), [
            f"org.kde.StatusNotifierItem-{self.orvanta.process.pid}-1/StatusNotifierItem"])
        for name, value in (("Title", "'↑ —/—'"), ("ToolTip", "orvanta · Sem dados classificados")):
            self.assertIn(value, self.read_item(name))
        # The panel has taken the trays' place over; an ousted tray does not ask for it again.
        tray.kill()
        panel.kill()
        tray.start()
        self.choose(self.wait_for_item(tray), "Up")
        self.assertEqual(self.orvanta.wait(), 0)
        self.wait_for_no_item(tray)
        self.assertEqual(self.store.integrity(), "ok")

    def test_the_popover_is_inside_the_work_area_of_its_monitor_at_every_scale(self):
        # Two monitors, the second larger and with no panel.
        for name, area in (("left", "640/169x800/211+0+0"), ("right", "640/169x700/185+640+100")):
            self.desktop.run("xrandr", "--setmonitor", name, area, "none" if name == "right"
                             else "screen")
        self.desktop.launch_xterm()
        panel = panels.XfcePanel(self.desktop)
        panel.start()
        bottom = panel.area[1] + panel.area[3]
        for scale in (1, 1.25, 2):
            self.orvanta.start(dict(self.desktop.environment, QT_SCALE_FACTOR=str(scale)))
            self.click(self.wait_for_item(panel))
            left, top, width, height = self.wait_for_popover()
            self.assertEqual((width, height), (WIDTH * scale, HEIGHT * scale))
            self.assertIn(top - bottom, range(4), scale)
            self.assertGreaterEqual(left, 0, scale)
            self.assertLessEqual(left + width, max(640, width), scale)
            self.ask_to_end()
            self.wait_for_no_item(panel)
