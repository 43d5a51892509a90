"""The application's shell on a real desktop: what clicks, keys and starts open and close."""

import subprocess
import time

import desktop
import panel_case
import panels

WIDTH, HEIGHT = 320, 352
WATCHER = ("org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
           "org.kde.StatusNotifierWatcher", "RegisteredStatusNotifierItems")


class Shell(panel_case.PanelTest):
    def setUp(self):
        super().setUp()
        self.prefer(setupDoneV1=True)

    def click_item(self, position):
        """And waits until it was told: told late, it is another click than the one that closed."""
        self.click(position)
        if panels.has_owner(self.desktop, WATCHER[0]):
            self.desktop.read(*WATCHER)
            self.desktop.read(f"org.kde.StatusNotifierItem-{self.orvanta.process.pid}-1",
                              "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Title")

    def assert_toggles(self, item):
        """Whatever is clicked in whichever order, one popover or none."""
        for close in (lambda: self.click_item(item), lambda: self.click((600, 300)),
                      lambda: self.desktop.press("Escape")):
            self.click_item(item)
            left, top, *_ = place = self.wait_for_popover()
            self.click((left + 20, top + 20))
            self.assertEqual(self.popovers(), [place], "a click into it")
            close()
            self.wait_for_no_popover()
        for _ in range(5):  # An odd number leaves it open.
            self.click_item(item)
        self.wait_for_popover()

    def choose(self, item, *keys):
        """In the item's menu."""
        def shown():
            return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", ""],
                                  env=self.environment, capture_output=True).stdout.split()

        before = set(shown())
        self.click(item, 3)
        desktop.wait_until(lambda: set(shown()) - before, "the menu")
        # It takes the keyboard just after it has come up, and nothing shows that it has.
        time.sleep(0.5)
        self.desktop.run("xdotool", "key", *keys, "Return")

    def wait_for_front(self, window):
        desktop.wait_until(lambda: self.desktop.run("xdotool", "getactivewindow").strip()
                           == str(window), f"window {window} in front")

    def test_a_click_in_the_panel_opens_the_popover_and_any_other_closes_it(self):
        mousepad = self.desktop.launch_mousepad()
        item = self.start_with_panel()
        self.assert_toggles(item)

        # Keys are the popover's, but what switches windows is not.
        self.desktop.run("xdotool", "keydown", "Alt_L", "key", "Tab", "keyup", "Alt_L")
        self.wait_for_no_popover()
        self.wait_for_front(mousepad)
        self.click(item)
        self.wait_for_popover()
        self.desktop.activate(self.terminal)
        self.wait_for_no_popover()

        # The panel's own menu, by its key, leads to the settings.
        self.click(item)
        self.wait_for_title("MONITORANDO")
        self.desktop.run("xdotool", "key", "Menu", "Up")
        self.reader.wait_for("Ajustes…")
        self.desktop.press("Return")
        self.wait_for_no_popover()
        settings = desktop.wait_until(self.own_windows, "the settings")[0]
        self.wait_for_front(settings)
        self.assertEqual(self.desktop.title(settings), "Ajustes do orvanta")
        self.desktop.press("ctrl+w")
        self.wait_for_front(self.terminal)

        # A right click on the item closes it, and its menu does what it says.
        self.click(item)
        self.wait_for_popover()
        self.choose(item, "Up", "Up")
        self.wait_for_no_popover()
        self.wait_for_front(desktop.wait_until(self.own_windows, "the settings")[0])

    def test_without_a_panel_in_a_tray_and_moving_between_both(self):
        self.desktop.launch_xterm()
        self.start()
        self.assertEqual(self.popovers(), [])
        for _ in range(2):
            self.start_again()
            self.wait_for_popover()
        self.click((300, 300))
        self.wait_for_no_popover()

        tray, panel = panels.EmbeddingTray(self.desktop), panels.XfcePanel(self.desktop)
        tray.start()
        self.assert_toggles(self.wait_for_item(tray))
        panel.start()
        self.wait_for_item(panel)
        self.wait_for_no_item(tray)
        # The panel has taken the trays' place over; an ousted tray does not ask for it again.
        tray.kill()
        panel.kill()
        tray.start()
        self.choose(self.wait_for_item(tray), "Up")
        self.assertEqual(self.orvanta.wait(), 0)
        self.assertEqual(self.store.integrity(), "ok")

    def test_the_popover_is_inside_the_work_area_of_its_monitor_at_every_scale(self):
        # Two monitors, the second larger and with no panel.
        for name, area, output in (("left", "640/169x800/211+0+0", "screen"),
                                   ("right", "640/169x700/185+640+100", "none")):
            self.desktop.run("xrandr", "--setmonitor", name, area, output)
        panel = panels.XfcePanel(self.desktop)
        panel.start()
        bottom = panel.area[1] + panel.area[3]
        for scale in (1, 1.25, 2):
            self.environment["QT_SCALE_FACTOR"] = str(scale)
            self.start()
            self.click(self.wait_for_item(panel))
            left, top, width, height = self.wait_for_popover()
            self.assertEqual((width, height), (WIDTH * scale, HEIGHT * scale))
            self.assertIn(top - bottom, range(4), scale)
            self.assertGreaterEqual(left, 0, scale)
            self.assertLessEqual(left + width, max(640, width), scale)
            self.ask_to_end()
            self.wait_for_no_item(panel)
