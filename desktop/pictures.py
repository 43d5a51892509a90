"""The panel in every state, as pictures for the documentation: panel-*.png.

pictures.py EXECUTABLE FOLDER

Each is the popover alone, on a virtual desktop with a store of its own. Needs what the tests of
the panel need.
"""

import os
import pathlib
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / "desktop"), str(ROOT / "tests" / "System")]

import desktop  # noqa: E402 (the path has just been set)
import panel_case  # noqa: E402
import panels  # noqa: E402

SITES = [("app:org.kde.kate", "Kate", "production", 9912),
         ("site:docs.example.org", "docs.example.org", "production", 4325),
         ("site:video.example.com", "video.example.com", "consumption", 3140),
         ("app:org.example.correio", "Correio", "pending", 1266),
         ("site:noticias.example.com", "noticias.example.com", "consumption", 754)]
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
        if not setup:
            item = f"org.kde.StatusNotifierItem-{self.orvanta.process.pid}-1"
            desktop.wait_until(lambda: panels.has_owner(self.desktop, item), "the item")
            self.desktop.call(item, "/StatusNotifierItem", "org.kde.StatusNotifierItem.Activate",
                              "600", "10")
        self.place = self.wait_for_popover()
        self.rest()

    def rest(self):
        self.desktop.run("xdotool", "mousemove", "300", "600")

    def picture(self, name):
        time.sleep(0.6)  # Until nothing fades any more.
        left, top, width, height = self.place
        self.desktop.run("scrot", "--overwrite", "--quality", "1",
                         "--autoselect", f"{left},{top},{width},{height}",
                         str(self._folder / f"panel-{name}-{self._scheme}.png"))


def take(folder, scheme):
    with Studio(folder, scheme) as studio:
        studio.open(setup=True)
        studio.picture("setup")
    with Studio(folder, scheme) as studio:
        studio.open()
        studio.picture("empty")
        studio.click_on("Não monitorados")
        studio.wait_for_title("NÃO")
        studio.rest()
        studio.picture("none-unmonitored")
    with Studio(folder, scheme) as studio:
        studio.open(SITES + STOPPED, list(days()))
        studio.picture("activities")
        studio.move_to("Correio")
        studio.picture("row")
        studio.click_on("Parar de monitorar Correio")
        studio.reader.wait_for("Cancelar")
        studio.rest()
        studio.picture("stop")
        studio.desktop.press("Escape")
        studio.click_on("Zerar tempo")
        studio.reader.wait_for("Cancelar")
        studio.rest()
        studio.picture("reset")
        studio.desktop.press("Escape")
        studio.click_on("Não monitorados")
        studio.wait_for_title("NÃO")
        studio.rest()
        studio.picture("unmonitored")
        studio.click_on("Histórico por dia")
        studio.wait_for_title("HIST")
        shown = [node["name"] for node in studio.reader.nodes()
                 if node["description"].startswith("Produção")]
        studio.move_to(shown[len(shown) // 2])
        studio.picture("history")


def main():
    os.environ["ORVANTA_EXECUTABLE"] = sys.argv[1]
    folder = pathlib.Path(sys.argv[2]).absolute()
    for scheme in ("light", "dark"):
        take(folder, scheme)


if __name__ == "__main__":
    main()
