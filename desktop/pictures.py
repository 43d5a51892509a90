"""The panel in every state, the windows and the menu, as pictures for the documentation.

pictures.py EXECUTABLE FOLDER

Each is one window alone, on a virtual desktop with a store of its own. Needs what the tests of the
panel and of the setup need: EXECUTABLE stands in a build tree that has the extension's packages.
"""

import contextlib
import os
import pathlib
import plistlib
import sqlite3
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / folder)
                for folder in ("desktop", "tests/System", "tests/Browser")]

import browsers  # noqa: E402 (the path has just been set)
import desktop  # noqa: E402
import orvanta_end  # noqa: E402
import panel_case  # noqa: E402
import panels  # noqa: E402

SITES = [("app:org.kde.kate", "Kate", "production", 9912),
         ("site:docs.example.org", "docs.example.org", "production", 4325),
         ("site:video.example.com", "video.example.com", "consumption", 3140),
         ("app:org.example.correio", "Correio", "pending", 1266),
         ("site:noticias.example.com", "noticias.example.com", "consumption", 754)]
BRIEF = [("app:org.kde.kate", "Kate", "production", 42),
         ("site:noticias.example.com", "noticias.example.com", "consumption", 17)]
STOPPED = [("app:org.example.musica", "Música", "ignored", 5400),
           ("site:mapas.example.org", "mapas.example.org", "ignored", 310)]


def days():
    """A quarter of a year, weekends quieter."""
    for ago in range(1, 90):
        if ago % 7 == 3:
            continue
        yield ago, "app:org.kde.kate", 1200 + ago * 7919 % 14000
        if ago % 5:
            yield ago, "site:video.example.com", 300 + ago * 104729 % 9000


class Studio(panel_case.PanelTest):
    """A desktop with the application on it, outside the test runner."""

    def __init__(self, folder, scheme):
        super().__init__("setUp")
        self._folder = folder
        self._scheme = scheme

    def __enter__(self):
        self.setUp()
        if self._scheme == "dark":
            self.desktop.spawn(["/usr/bin/python3", "-B", str(
                pathlib.Path(__file__).with_name("dark_portal.py"))])
            desktop.wait_until(lambda: panels.has_owner(
                self.desktop, "org.freedesktop.portal.Desktop"), "the portal")
        return self

    def __exit__(self, *_):
        self.doCleanups()

    def open(self, activities=(), past=(), setup=False):
        if not setup:
            self.prepare_store(activities, past)
            panels.XfcePanel(self.desktop).start()
        self.orvanta.start(self.environment)
        if setup:
            self.place = self.wait_for_popover()
            self.rest()
        else:
            self.item = f"org.kde.StatusNotifierItem-{self.orvanta.process.pid}-1"
            desktop.wait_until(lambda: panels.has_owner(self.desktop, self.item), "the item")

    def open_panel(self):
        self.desktop.call(self.item, "/StatusNotifierItem",
                          "org.kde.StatusNotifierItem.Activate", "600", "10")
        self.place = self.wait_for_popover()
        self.rest()

    def open_menu(self):
        """The panel's own, below the pointer."""
        left, top, *_ = self.place
        self.desktop.run("xdotool", "mousemove", str(left + 60), str(top + 200), "click", "3")
        self.desktop.press("Up")
        self.reader.wait_for("Ajustes…")

    def wait_for_banner(self, beginning):
        desktop.wait_until(
            lambda: any(name.startswith(beginning) for name in self.reader.names("label")),
            f"'{beginning}'", orvanta_end.PATIENCE)

    def rest(self):
        self.desktop.run("xdotool", "mousemove", "300", "600")

    def bring_up(self, title):
        """The window of the application that has this title, in front."""
        def found():
            for window in self.own_windows():
                with contextlib.suppress(desktop.DesktopError):
                    if self.desktop.title(window) == title:
                        return window
            return None

        self.desktop.activate(desktop.wait_until(found, f"the window '{title}'",
                                                 orvanta_end.PATIENCE))

    def has_permission(self):
        path = self.configuration() / "com.brindlework.orvanta.automation.plist"
        return "allowed" in plistlib.loads(path.read_bytes())

    def picture(self, name):
        left, top, width, height = self.place
        self._take(name, "--autoselect", f"{left},{top},{width},{height}")

    def window_picture(self, name):
        self._take(name, "--focused")

    def _take(self, name, *options):
        time.sleep(0.6)  # Until nothing fades any more.
        self.desktop.run("scrot", "--overwrite", "--quality", "1", *options,
                         str(self._folder / f"{name}-{self._scheme}.png"))


def take_the_panel(folder, scheme):
    with Studio(folder, scheme) as studio:
        studio.open(setup=True)
        studio.picture("panel-setup")
    with Studio(folder, scheme) as studio:
        studio.open()
        studio.open_panel()
        studio.picture("panel-empty")
        studio.click_on("Não monitorados")
        studio.wait_for_title("NÃO")
        studio.rest()
        studio.picture("panel-none-unmonitored")
    with Studio(folder, scheme) as studio:
        studio.open(SITES + STOPPED, list(days()))
        studio.open_panel()
        studio.picture("panel-activities")
        studio.open_menu()
        studio.picture("panel-menu")
        studio.desktop.press("Escape")
        studio.move_to("Correio")
        studio.picture("panel-row")
        studio.click_on("Parar de monitorar Correio")
        studio.reader.wait_for("Cancelar")
        studio.rest()
        studio.picture("panel-stop")
        studio.desktop.press("Escape")
        studio.click_on("Zerar tempo")
        studio.reader.wait_for("Cancelar")
        studio.rest()
        studio.picture("panel-reset")
        studio.desktop.press("Escape")
        studio.click_on("Não monitorados")
        studio.wait_for_title("NÃO")
        studio.rest()
        studio.picture("panel-unmonitored")
        studio.click_on("Histórico por dia")
        studio.wait_for_title("HIST")
        shown = [node["name"] for node in studio.reader.nodes()
                 if node["description"].startswith("Produção")]
        studio.move_to(shown[len(shown) // 2])
        studio.picture("panel-history")


def take_the_messages(folder, scheme):
    with Studio(folder, scheme) as studio:
        studio.open(BRIEF)
        studio.open_panel()
        studio.picture("panel-brief")
    with Studio(folder, scheme) as studio:
        studio.open(SITES)
        # Another program holds the store, until it is closed.
        with contextlib.closing(sqlite3.connect(studio.store.path)) as holder:
            holder.execute("BEGIN IMMEDIATE")
            studio.desktop.launch_xterm()
            studio.open_panel()
            studio.wait_for_banner("Não foi possível salvar")
            studio.picture("panel-not-saved")


def take_the_windows(folder, scheme):
    with Studio(folder, scheme) as studio, contextlib.closing(orvanta_end.Sites()) as pages:
        browser = browsers.Chromium(studio.desktop, pages)

        def open_browser():
            browser.new_window(lambda: browser.open(browser.address("noticias.test")))

        open_browser()
        studio.open(SITES + STOPPED, list(days()))
        desktop.wait_until(studio.own_windows, "the question", orvanta_end.PATIENCE)
        studio.open_panel()
        studio.wait_for_banner("Permissão de Automação")
        studio.picture("panel-browser")
        if scheme == "dark":
            return  # The windows look as the toolkit has them.

        studio.desktop.press("Escape")
        studio.bring_up("orvanta")
        studio.window_picture("browser-question")
        studio.click_on("Não permitir")
        studio.open_panel()
        studio.open_menu()
        studio.desktop.press("Return")
        studio.bring_up("Ajustes do orvanta")
        studio.click_on("Abrir Ajustes do Sistema")
        studio.bring_up("Automação")
        studio.window_picture("automation")
        studio.desktop.press("space")
        studio.bring_up("orvanta")
        studio.click_on("Permitir")
        studio.reader.wait_for("OK")
        studio.window_picture("browser-restart")
        studio.click_on("OK")

        browser.process.terminate()
        browser.process.wait(orvanta_end.PATIENCE)
        browser.process = None
        open_browser()
        desktop.wait_until(studio.has_permission, "the connection", orvanta_end.PATIENCE)
        studio.bring_up("Ajustes do orvanta")
        studio.reader.wait_for("Permitido")
        studio.window_picture("settings-general")
        studio.click_on("Classificações")
        studio.window_picture("settings-classifications")


def main():
    os.environ["ORVANTA_EXECUTABLE"] = sys.argv[1]
    folder = pathlib.Path(sys.argv[2]).absolute()
    for scheme in ("light", "dark"):
        for take in (take_the_panel, take_the_messages, take_the_windows):
            take(folder, scheme)


if __name__ == "__main__":
    main()
