"""What decides whether the person is away: logind and a screen saver, played on the desktop's bus."""

import desktop

SAVER = ("org.gnome.ScreenSaver", "/org/gnome/ScreenSaver")
LOGIND = ("org.freedesktop.login1", "/org/freedesktop/login1")
SESSION = ("org.freedesktop.login1", "/org/freedesktop/login1/session/c1")
MOCK = "org.freedesktop.DBus.Mock"


class Services:
    """For a test with a desktop."""

    def start_services(self):
        environment = self.desktop.environment
        # One bus is both here, and dbusmock plays the services on it.
        environment["DBUS_SYSTEM_BUS_ADDRESS"] = environment["DBUS_SESSION_BUS_ADDRESS"]
        environment["XDG_SESSION_ID"] = "c1"
        for template in ("logind", "gnome_screensaver"):
            self.desktop.spawn(["/usr/bin/python3", "-m", "dbusmock", "--template", template])
        self._call_when_there(*LOGIND, f"{MOCK}.AddSession", "c1", "seat0", "1000", "somebody",
                              "true")
        self._call_when_there(*SAVER, "org.gnome.ScreenSaver.GetActive")

    def _call_when_there(self, *call):
        def answered():
            try:
                return self.desktop.call(*call)
            except desktop.DesktopError:
                return None

        desktop.wait_until(answered, call[0])

    def prepare_for_sleep(self, begins):
        self.desktop.call(*LOGIND, f"{MOCK}.EmitSignal", "org.freedesktop.login1.Manager",
                  "PrepareForSleep", "b", f"[<{begins}>]")

    def _session_property(self, name, value):
        self.desktop.call(*SESSION, f"{MOCK}.UpdateProperties", "org.freedesktop.login1.Session",
                  f"{{'{name}': <{value}>}}")

    def switch_session(self, begins):
        self._session_property("Active", "false" if begins == "true" else "true")

    def lock(self, begins):
        self._session_property("LockedHint", begins)

    def save_the_screen(self, begins):
        self.desktop.call(*SAVER, "org.gnome.ScreenSaver.SetActive", begins)
