"""The application's shell on a real desktop: what clicks, keys and starts open and close."""

import os
import time

import case
import desktop
import panels
import shell_case
import status_area

WIDTH, HEIGHT = 320, 352


class Shell(shell_case.ShellTest):
    def assert_toggles(self, item, elsewhere):
        """Whatever is clicked in whichever order, one popover or none."""
        self.click(item)
        self.wait_for_popover()
        self.click(item)
        self.wait_for_no_popover()
        self.click(item)
        place = self.wait_for_popover()
        self.click((place[0] + 20, place[1] + 20))
        self.assertEqual(self.only_popover(), place, "a click into it")
        self.click(elsewhere)
        self.wait_for_no_popover()
        for _ in range(9):  # An odd number leaves it open.
            self.click(item)
        self.wait_for_popover()
        self.desktop.press("Escape")
        self.wait_for_no_popover()
        return place

    def test_a_click_in_the_panel_opens_the_popover_and_any_other_closes_it(self):
        item = self.start_with_panel()
        mousepad = self.desktop.launch_mousepad()
        self.desktop.activate(self.terminal)
        began = time.monotonic()
        place = self.assert_toggles(item, (600, 300))
        left, top, width, height = place
        self.assertEqual((width, height), (WIDTH, HEIGHT))
        self.assertGreaterEqual(top, self.panel.area[1] + self.panel.area[3])
        self.assertGreaterEqual(left, 0)

        # Keys are the popover's, but what switches windows is not.
        self.click(item)
        self.wait_for_popover()
        self.desktop.run("xdotool", "keydown", "Alt_L", "key", "Tab", "keyup", "Alt_L")
        self.wait_for_no_popover()
        desktop.wait_until(lambda: self.desktop.run("xdotool", "getactivewindow").strip()
                           == str(mousepad), "the other window")
        changed = time.monotonic()
        self.click(item)
        self.wait_for_popover()
        self.desktop.activate(self.terminal)
        self.wait_for_no_popover()
        returned = time.monotonic()

        # A right click closes it, and the menu does what it says.
        self.click(item)
        self.wait_for_popover()
        self.click(item, 3)
        self.wait_for_no_popover()
        self.desktop.press("Escape")
        self.ask_to_end()
        ended = time.monotonic()
        counted = self.store.session_seconds()
        self.assertAlmostEqual(counted[case.XTERM] + counted[case.MOUSEPAD], ended - began,
                               delta=2 * case.TOLERANCE + 3)
        self.assertAlmostEqual(counted[case.MOUSEPAD] - (returned - changed), 0,
                               delta=2 * case.TOLERANCE)

    def test_a_click_in_an_embedding_tray_opens_it_too(self):
        self.finish_setup()
        self.desktop.launch_xterm()
        tray = panels.EmbeddingTray(self.desktop)
        tray.start()
        self.orvanta.start()
        self.assert_toggles(self.wait_for_item(tray), (600, 300))

    def test_without_a_tray_starting_again_opens_the_panel(self):
        self.finish_setup()
        self.desktop.launch_xterm()
        self.orvanta.start()
        time.sleep(1)
        self.assertEqual(self.popovers(), [])
        self.start_again()
        self.wait_for_popover()
        self.start_again()
        self.only_popover()
        self.click((300, 300))
        self.wait_for_no_popover()

    def test_the_settings_are_a_window_that_comes_back_when_started_again(self):
        item = self.start_with_panel()
        self.assertEqual(self.own_windows(), [])
        self.click(item, 3)
        time.sleep(0.5)  # The panel's menu takes the keyboard when it pleases.
        self.desktop.run("xdotool", "key", "Up", "Up", "Return")
        window = desktop.wait_until(self.own_windows, "the settings")[0]
        desktop.wait_until(lambda: self.desktop.run("xdotool", "getactivewindow").strip()
                           == str(window), "the settings in front")
        self.assertEqual(self.desktop.title(window), "Ajustes do orvanta")
        self.assertNotIn("SKIP_TASKBAR", self.desktop.run("xprop", "-id", str(window),
                                                          "_NET_WM_STATE"))
        self.desktop.screenshot(os.environ.get("ORVANTA_SCREENSHOTS", str(self.desktop.folder))
                                + "/settings.png")
        for hide, is_brought_back in (("ctrl+m", True), ("ctrl+h", True), ("ctrl+w", False)):
            self.desktop.press(hide)
            desktop.wait_until(lambda: self.desktop.run("xdotool", "getactivewindow").strip()
                               == str(self.terminal), "the terminal in front")
            self.start_again()
            if is_brought_back:
                desktop.wait_until(lambda: self.desktop.run("xdotool", "getactivewindow").strip()
                                   == str(window), f"the settings after {hide}")
            else:
                time.sleep(0.5)
                self.assertEqual(self.own_windows(), [])
        self.assertEqual(self.popovers(), [])
        self.ask_to_end()

    def test_the_popover_is_inside_the_work_area_of_its_monitor_at_every_scale(self):
        self.finish_setup()
        # Two monitors, the second larger and with no panel.
        for name, area in (("left", "640/169x800/211+0+0"), ("right", "640/169x700/185+640+100")):
            self.desktop.run("xrandr", "--setmonitor", name, area, "none" if name == "right"
                             else "screen")
        self.desktop.launch_xterm()
        panel = panels.XfcePanel(self.desktop)
        panel.start()
        for scale in ("1", "1.25", "1.5", "2"):
            self.orvanta.start(dict(self.desktop.environment, QT_SCALE_FACTOR=scale))
            self.click(self.wait_for_item(panel))
            left, top, width, height = self.wait_for_popover()
            self.assertEqual((width, height), (WIDTH * float(scale), HEIGHT * float(scale)))
            self.assertGreaterEqual(top, panel.area[1] + panel.area[3], scale)
            self.assertLessEqual(top, panel.area[1] + panel.area[3] + 3, scale)
            self.assertGreaterEqual(left, 0, scale)
            self.assertLessEqual(left + width, 640 if width <= 640 else width, scale)
            self.ask_to_end()
            desktop.wait_until(lambda: not status_area.ink(self.desktop, panel,
                                                           status_area.SECONDARY), "the item's end")
