"""Plays a screen reader: follows the keyboard's focus and says, for each line that it reads, what
is in the window where it last was. Qt does not list popups among an application's windows, so the
focus is the only way to them, for real screen readers too.

Lines read:    "read", or "press NAME" to carry out the first action of what has this name.
Lines written: "ready" at first, then a JSON object, null, or whether it was found, for each.
"""

import contextlib
import json
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402 (which version has just been said)

STATES = ("checked", "focused", "modal")


def has(node, state):
    return node.get_state_set().contains(getattr(Atspi.StateType, state.upper()))


def shown_children(node):
    found = (node.get_child_at_index(i) for i in range(node.get_child_count()))
    return [child for child in found if child is not None and has(child, "showing")]


def role_of(node):
    # A button's name depends on the release.
    is_button = node.get_role() == Atspi.Role.PUSH_BUTTON
    return "button" if is_button else node.get_role_name()


def described(node):
    place = node.get_extents(Atspi.CoordType.SCREEN)
    return {"role": role_of(node), "name": node.get_name(),
            "description": node.get_description(),
            "states": [state for state in STATES if has(node, state)],
            "place": (place.x, place.y, place.width, place.height),
            "children": [described(child) for child in shown_children(node)]}


def find(node, name):
    if node.get_name() == name and node.get_n_actions() > 0:
        return node
    return next((found for child in shown_children(node) if (found := find(child, name))), None)


class Reader:
    def __init__(self):
        self._windows = []
        self._listener = Atspi.EventListener.new(self._focused)
        self._listener.register("object:state-changed:focused")
        # Names are kept until they are said to have changed, as real screen readers have it.
        self._heard = Atspi.EventListener.new(lambda event: None)
        for kind in ("object:property-change", "object:children-changed", "object:state-changed"):
            self._heard.register(kind)
        GLib.io_add_watch(sys.stdin.fileno(), GLib.IO_IN | GLib.IO_HUP, self._asked)

    def _focused(self, event):
        node = event.source
        with contextlib.suppress(GLib.Error):  # It may have gone already.
            while (parent := node.get_parent()) and parent.get_role() != Atspi.Role.APPLICATION:
                node = parent
            self._windows = [window for window in self._windows if window != node] + [node]

    def _window_in_front(self):
        while self._windows:
            with contextlib.suppress(GLib.Error):
                if has(self._windows[-1], "showing"):
                    return self._windows[-1]
            self._windows.pop()
        return None

    def _answer(self, command, name):
        if (window := self._window_in_front()) is None:
            return None
        try:
            if command == "read":
                return described(window)
            found = find(window, name)
            return bool(found and found.do_action(0))
        except GLib.Error:
            return None  # Something went while it was read.

    def _asked(self, *_):
        command, _, name = sys.stdin.readline().rstrip("\n").partition(" ")
        if not command:
            Atspi.event_quit()
            return False
        print(json.dumps(self._answer(command, name)), flush=True)
        return True


Atspi.init()
reader = Reader()
print("ready", flush=True)
Atspi.event_main()
