#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""What a screen reader finds of applications, as JSON.

Reads process numbers from standard input, one a line, and answers each with one line: the windows of
that process, whole. It stays for many questions because the accessibility bus takes a while to join.
Debian's own interpreter, since the bindings belong to it.
"""

import json
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

STATES = {
    "focused": Atspi.StateType.FOCUSED,
    "focusable": Atspi.StateType.FOCUSABLE,
    "default": Atspi.StateType.IS_DEFAULT,
    "modal": Atspi.StateType.MODAL,
    "enabled": Atspi.StateType.ENABLED,
    "showing": Atspi.StateType.SHOWING,
    "active": Atspi.StateType.ACTIVE,
    "editable": Atspi.StateType.EDITABLE,
}
DEEPEST = 20
# An application whose main thread stands still does not answer at all.
ANSWER_MILLISECONDS = 1000


def describe(item, depth=0):
    states = item.get_state_set()
    found = {
        "role": item.get_role_name(),
        "name": item.get_name(),
        "states": [name for name, state in STATES.items() if states.contains(state)],
        "children": [],
    }
    if item.get_text_iface() is not None:
        found["text"] = Atspi.Text.get_text(item, 0, -1)
    if item.get_value_iface() is not None:
        found["value"] = Atspi.Value.get_current_value(item)
    if item.get_component_iface() is not None:
        box = Atspi.Component.get_extents(item, Atspi.CoordType.SCREEN)
        found["bounds"] = [box.x, box.y, box.width, box.height]
    if depth < DEEPEST:
        children = (item.get_child_at_index(index) for index in range(item.get_child_count()))
        found["children"] = [describe(child, depth + 1) for child in children if child is not None]
    return found


def windows_of(process):
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(index)
        if application is not None and application.get_process_id() == process:
            application.clear_cache()
            return describe(application)["children"]
    return []


def main():
    Atspi.set_timeout(ANSWER_MILLISECONDS, ANSWER_MILLISECONDS)
    for line in sys.stdin:
        # What the bus has told meanwhile, which the cached items follow.
        while GLib.MainContext.default().iteration(False):
            pass
        try:
            found = windows_of(int(line))
        except GLib.Error:
            # An item, or its application, went away while it was looked at.
            found = []
        print(json.dumps(found), flush=True)


if __name__ == "__main__":
    main()
