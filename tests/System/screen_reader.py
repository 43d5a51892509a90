"""Plays a screen reader: follows the keyboard's focus and says, for each line that it reads, what
is in the window where it last was, as a list of JSON objects from the outside in. Qt does not list
popups among an application's windows, so the focus is the only way to them, for real screen readers
too."""

import contextlib
import json
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402 (which version has just been said)

windows = []  # The one that had the keyboard last is the last.


def is_showing(node):
    return node.get_state_set().contains(Atspi.StateType.SHOWING)


def shown(node):
    yield node
    for number in range(node.get_child_count()):
        child = node.get_child_at_index(number)
        if child is not None and is_showing(child):
            yield from shown(child)


def described(node):
    place = node.get_extents(Atspi.CoordType.SCREEN)
    # A button's name depends on the release.
    is_button = node.get_role() == Atspi.Role.PUSH_BUTTON
    return {"role": "button" if is_button else node.get_role_name(), "name": node.get_name(),
            "description": node.get_description(),
            "place": (place.x, place.y, place.width, place.height)}


def focused(event):
    node = event.source
    with contextlib.suppress(GLib.Error):  # It may have gone already.
        while (parent := node.get_parent()) and parent.get_role() != Atspi.Role.APPLICATION:
            node = parent
        windows[:] = [window for window in windows if window != node] + [node]


def asked(*_):
    if not sys.stdin.readline():
        Atspi.event_quit()
        return False
    said = []
    while windows and not said:
        with contextlib.suppress(GLib.Error):  # Something may go while it is read.
            if is_showing(windows[-1]):
                said = [described(node) for node in shown(windows[-1])]
                break
        windows.pop()
    print(json.dumps(said), flush=True)
    return True


Atspi.init()
listener = Atspi.EventListener.new(focused)
listener.register("object:state-changed:focused")
# Names are kept until they are said to have changed, as real screen readers have it.
heard = Atspi.EventListener.new(lambda event: None)
for kind in ("object:property-change", "object:children-changed", "object:state-changed"):
    heard.register(kind)
GLib.io_add_watch(sys.stdin.fileno(), GLib.IO_IN | GLib.IO_HUP, asked)
print("ready", flush=True)
Atspi.event_main()
