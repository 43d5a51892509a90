"""On labwc, whose windows are told by wlroots' list alone: what test_sway sees on sway."""

import desktop
import labwc
import test_sway


class Labwc(test_sway.Sway):
    def make_desktop(self):
        return labwc.LabwcDesktop(time_zone=desktop.zone_far_from_midnight())

    def absences(self, terminal):
        return ((self.desktop.lock, self.desktop.unlock),
                (lambda: self.desktop.minimize(terminal), lambda: self.desktop.activate(terminal)))
