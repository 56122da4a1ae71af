#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Prints what the accessibility bus tells a screen reader from now on: the event's kind, the role and the name of what
it comes from, and its number, as one JSON list a line. The first line is `ready`."""

import json

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

KINDS = ("window:activate", "object:state-changed:focused", "object:property-change:accessible-value")


def tell(event):
    # Who is gone by now was heard of before.
    try:
        source = event.source
        row = [event.type, source.get_role_name(), source.get_name(), event.detail1]
        if event.type.endswith("accessible-value"):
            row[3] = source.get_current_value()
    except GLib.Error:
        return
    print(json.dumps(row), flush=True)


listener = Atspi.EventListener.new(tell)
for kind in KINDS:
    listener.register(kind)
print("ready", flush=True)
Atspi.event_main()
