"""Plays a screen reader: follows the keyboard's focus and says, for each line that it reads, what
is in the window where it last was. Qt does not list popups among an application's windows, so the
focus is the only way to them, for real screen readers too.

Lines read:    "read"; "find NAME", a button sooner than anything else; "press NAME" to carry out the
               first action of what has this name; "focused".
Lines written: "ready" at first, then for each a list of JSON objects; one, with its place; whether
               it was found; the name of what has the keyboard.
"""

import contextlib
import json
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402 (which version has just been said)

STATES = ("checked", "focused", "modal")
windows = []  # With what had the keyboard last in each; the one in front last.


def has(node, state):
    return node.get_state_set().contains(getattr(Atspi.StateType, state.upper()))


def shown(node):
    """This and all that it shows, from the outside in."""
    yield node
    for number in range(node.get_child_count()):
        child = node.get_child_at_index(number)
        if child is not None and has(child, "showing"):
            yield from shown(child)


def described(node):
    # A button's name depends on the release.
    is_button = node.get_role() == Atspi.Role.PUSH_BUTTON
    return {"role": "button" if is_button else node.get_role_name(), "name": node.get_name(),
            "description": node.get_description(),
            "states": [state for state in STATES if has(node, state)]}


def focused(event):
    node = event.source
    with contextlib.suppress(GLib.Error):  # It may have gone already.
        while (parent := node.get_parent()) and parent.get_role() != Atspi.Role.APPLICATION:
            node = parent
        windows[:] = [window for window in windows if window[0] != node] + [(node, event.source)]


def window_in_front():
    """With what had the keyboard last in it."""
    while windows:
        with contextlib.suppress(GLib.Error):
            if has(windows[-1][0], "showing"):
                return windows[-1]
        windows.pop()
    return None


def answer(command, name):
    if (front := window_in_front()) is None:
        return [] if command == "read" else None
    window, focus = front
    if command == "focused":
        # Tabs say so for their list, and are not heard to lose it.
        held = [node for node in (focus, *shown(window)) if has(node, "focused")
                and node.get_role() != Atspi.Role.PAGE_TAB]
        return held[-1].get_name() if held else None
    if command == "read":
        return [described(node) for node in shown(window)]
    nodes = [node for node in shown(window) if node.get_name() == name]
    if command == "press":
        return any(node.do_action(0) for node in nodes if node.get_n_actions() > 0)
    nodes.sort(key=lambda node: node.get_role() != Atspi.Role.PUSH_BUTTON)
    if not nodes:
        return None
    place = nodes[0].get_extents(Atspi.CoordType.SCREEN)
    return described(nodes[0]) | {"place": (place.x, place.y, place.width, place.height)}


def asked(*_):
    command, _, name = sys.stdin.readline().rstrip("\n").partition(" ")
    if not command:
        Atspi.event_quit()
        return False
    said = [] if command == "read" else None
    with contextlib.suppress(GLib.Error):  # Something may go while it is read.
        said = answer(command, name)
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
