"""On GNOME Shell: what test_sway sees on sway, GNOME's lock, and how the extension that tells which
window has the focus gets there."""

import os
import time

import case
import desktop
import gnome
import test_sway
from test_sway import FOOT

EXECUTABLE = os.environ["ORVANTA_EXECUTABLE"]


class Gnome(test_sway.Sway):
    def make_desktop(self):
        return gnome.GnomeDesktop(time_zone=desktop.zone_far_from_midnight(),
                                  executable=EXECUTABLE)

    def absences(self, terminal):
        place = self.desktop
        return ((place.lock, place.unlock),
                (lambda: place.switch_displays(False), lambda: place.switch_displays(True)),
                (lambda: place.minimize(terminal), lambda: place.activate(terminal)))


class Agreement(case.SystemTest):
    def make_desktop(self):
        return gnome.GnomeDesktop(time_zone=desktop.zone_far_from_midnight())

    def wait_for_window_beside(self, *others):
        window = desktop.wait_until(lambda: set(self.desktop.windows()) - set(others),
                                    "a window").pop()
        desktop.wait_until(lambda: self.desktop.focused() == window, "the keyboard in it")
        return window

    def test_it_counts_from_the_login_after_the_agreement_on(self):
        place = self.desktop
        installed = place.extensions / gnome.EXTENSION
        script = installed / "extension.js"
        shipped = (gnome.shipped_extension(EXECUTABLE) / "extension.js").read_text()
        self.prefer(setupDoneV1=True)
        terminal = place.launch_terminal()
        self.orvanta.start()
        question = self.wait_for_window_beside(terminal)
        self.assertFalse(installed.exists())
        place.press("Return")  # "Permitir".
        answer = self.wait_for_window_beside(terminal, question)  # A new login is needed.
        self.assertEqual(script.read_text(), shipped)
        self.assertIn(gnome.EXTENSION, place.enabled_extensions())
        place.press("Return")
        desktop.wait_until(lambda: answer not in place.windows(), "the end of the answer")
        place.activate(terminal)
        time.sleep(6)
        self.assertEqual(self.store.total(), 0)

        place.kill_server()
        place.restart_server()
        place.launch_terminal()
        self.wait_to_count(FOOT)
        self.ask_to_end()

        # At the next start, what another version left there is replaced.
        script.write_text("// Of another version.")
        self.orvanta.start()
        desktop.wait_until(lambda: script.read_text() == shipped, "its renewal")
