"""Prints, as JSON, what a screen reader finds of one application: its windows, whole.

usage: accessible_tree.py PROCESS-ID
"""

import json
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402


def text_of(item):
    try:
        if item.get_text_iface() is not None:
            return Atspi.Text.get_text(item, 0, -1)
    except Exception:  # an item may go away while it is looked at
        pass
    return None


def describe(item, depth=0):
    states = item.get_state_set()
    found = {
        "role": item.get_role_name(),
        "name": item.get_name(),
        "states": [
            name
            for name, state in (
                ("focused", Atspi.StateType.FOCUSED),
                ("focusable", Atspi.StateType.FOCUSABLE),
                ("default", Atspi.StateType.IS_DEFAULT),
                ("modal", Atspi.StateType.MODAL),
                ("enabled", Atspi.StateType.ENABLED),
                ("showing", Atspi.StateType.SHOWING),
                ("active", Atspi.StateType.ACTIVE),
            )
            if states.contains(state)
        ],
    }
    text = text_of(item)
    if text is not None:
        found["text"] = text
    if item.get_value_iface() is not None:
        found["value"] = Atspi.Value.get_current_value(item)
    if depth < 20:
        found["children"] = [
            describe(child, depth + 1)
            for child in (item.get_child_at_index(i) for i in range(item.get_child_count()))
            if child is not None
        ]
    return found


def main():
    wanted = int(sys.argv[1])
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(index)
        if application is not None and application.get_process_id() == wanted:
            application.clear_cache()
            print(json.dumps(describe(application)["children"]))
            return 0
    print("[]")
    return 0


if __name__ == "__main__":
    sys.exit(main())
