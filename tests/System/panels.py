"""Panels with a status area, on a virtual desktop."""

import re
import struct
import zlib

import desktop

_XFCONFD = "/usr/lib/x86_64-linux-gnu/xfce4/xfconf/xfconfd"

# The dialogue of a first start stays away, and so do the applications that the defaults look for.
_XFCE_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="{dark}"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="{size}"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray">
      <property name="icon-size" type="int" value="{icon}"/>
      <property name="square-icons" type="bool" value="true"/>
    </property>
  </property>
</channel>
"""


class XfcePanel:
    """xfce4-panel along the top of the screen, with nothing but its status area."""

    def __init__(self, place, dark=False, size=28, icon=22):
        self._place = place
        self._process = None
        self.area = (0, 0, 1280, size)
        folder = place.folder / "config" / "xfce4" / "xfconf" / "xfce-perchannel-xml"
        folder.mkdir(parents=True, exist_ok=True)
        (folder / "xfce4-panel.xml").write_text(
            _XFCE_SETTINGS.format(dark=str(dark).lower(), size=size, icon=icon))
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
    answer = place.run("gdbus", "call", "--session", "--dest", "org.freedesktop.DBus",
                       "--object-path", "/org/freedesktop/DBus",
                       "--method", "org.freedesktop.DBus.NameHasOwner", name)
    return "true" in answer


def registered_items(place):
    """What the watcher has, as bus names with a path."""
    answer = place.run(
        "gdbus", "call", "--session", "--dest", "org.kde.StatusNotifierWatcher",
        "--object-path", "/StatusNotifierWatcher", "--method",
        "org.freedesktop.DBus.Properties.Get", "org.kde.StatusNotifierWatcher",
        "RegisteredStatusNotifierItems")
    return re.findall(r"'([^']*)'", answer)


def item_property(place, service, name):
    return place.run("gdbus", "call", "--session", "--dest", service,
                     "--object-path", "/StatusNotifierItem", "--method",
                     "org.freedesktop.DBus.Properties.Get", "org.kde.StatusNotifierItem", name)


def item_menu(place, service):
    return place.run("gdbus", "call", "--session", "--dest", service, "--object-path", "/MenuBar",
                     "--method", "com.canonical.dbusmenu.GetLayout", "0", "1", "[]")


def pixels(place, area):
    """{(x, y): (red, green, blue)} of this part (x, y, width, height) of the screen."""
    left, top, width, height = area
    path = place.folder / "area.png"
    place.run("scrot", "--overwrite", "--autoselect", f"{left},{top},{width},{height}", str(path))
    return {(left + x, top + y): colour for (x, y), colour in _read_png(path.read_bytes()).items()}


def _read_png(data):
    """Eight bits a channel, not interlaced: what scrot writes."""
    body, position, width, channels = b"", 8, 0, 0
    while position < len(data):
        length, kind = struct.unpack(">I4s", data[position:position + 8])
        chunk = data[position + 8:position + 8 + length]
        position += length + 12
        if kind == b"IHDR":
            width = struct.unpack(">I", chunk[:4])[0]
            channels = {2: 3, 6: 4}[chunk[9]]
        elif kind == b"IDAT":
            body += chunk
    raw, stride = zlib.decompress(body), width * channels
    previous, found = bytearray(stride), {}
    for y in range(len(raw) // (stride + 1)):
        kind, line = raw[y * (stride + 1)], bytearray(raw[y * (stride + 1) + 1:][:stride])
        for i in range(stride):
            a = line[i - channels] if i >= channels else 0
            b, c = previous[i], previous[i - channels] if i >= channels else 0
            if kind == 4:
                p = a + b - c
                near = min((abs(p - a), 0, a), (abs(p - b), 1, b), (abs(p - c), 2, c))[2]
            else:
                near = (0, a, b, (a + b) // 2)[kind]
            line[i] = (line[i] + near) & 0xFF
        for x in range(width):
            found[x, y] = tuple(line[x * channels:x * channels + 3])
        previous = line
    return found
