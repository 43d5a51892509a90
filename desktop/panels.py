"""Panels with a status area, on a virtual desktop."""

import desktop

_XFCONFD = "/usr/lib/x86_64-linux-gnu/xfce4/xfconf/xfconfd"

# The dialogue of a first start stays away, and so do the applications that the defaults look for.
_XFCE_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="28"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray">
      <property name="icon-size" type="int" value="22"/>
      <property name="square-icons" type="bool" value="true"/>
    </property>
  </property>
</channel>
"""


class XfcePanel:
    """xfce4-panel along the top of the screen, with nothing but its status area."""

    def __init__(self, place):
        self._place = place
        self._process = None
        self.area = (0, 0, 1280, 28)
        folder = place.folder / "config" / "xfce4" / "xfconf" / "xfce-perchannel-xml"
        folder.mkdir(parents=True, exist_ok=True)
        (folder / "xfce4-panel.xml").write_text(_XFCE_SETTINGS)
        self._settings = place.spawn([_XFCONFD])
        desktop.wait_until(lambda: has_owner(place, "org.xfce.Xfconf"), "the panel's settings")

    def start(self):
        self._process = self._place.spawn(["xfce4-panel", "--disable-wm-check"])
        desktop.wait_until(lambda: has_owner(self._place, "org.kde.StatusNotifierWatcher"),
                           "the panel's status area")

    def kill(self):
        self._process.kill()
        self._process.wait()
        desktop.wait_until(lambda: not has_owner(self._place, "org.kde.StatusNotifierWatcher"),
                           "the end of the panel's status area")

    def close(self):
        for process in (self._process, self._settings):
            process.kill()
            process.wait()
        for name in ("org.kde.StatusNotifierWatcher", "org.xfce.Xfconf"):
            desktop.wait_until(lambda name=name: not has_owner(self._place, name), f"the end of {name}")


class EmbeddingTray:
    """trayer, which knows only windows that are embedded in it, in a corner at the bottom."""

    def __init__(self, place):
        self._place = place
        self._process = None
        self.area = (0, 772, 200, 28)

    def start(self):
        self._process = self._place.spawn(
            ["trayer", "--edge", "bottom", "--align", "left", "--widthtype", "pixel",
             "--width", "200", "--heighttype", "pixel", "--height", "28"])

    def kill(self):
        self._process.kill()
        self._process.wait()


def has_owner(place, name):
    return "true" in place.call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                "org.freedesktop.DBus.NameHasOwner", name)
