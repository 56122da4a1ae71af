#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The bar in which a desktop shows the menus of all applications, as far as the bus sees it.

Prints a line when it is there; then reads a title a line and chooses the item of that title in the menu
that was registered last. Answers with "chosen", or with "none" when there is no such item.
Debian's own interpreter, since the bindings belong to it.
"""

import sys
import threading

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

NAME = "com.canonical.AppMenu.Registrar"
PATH = "/com/canonical/AppMenu/Registrar"
MENU = "com.canonical.dbusmenu"
DESCRIPTION = """
<node><interface name="com.canonical.AppMenu.Registrar">
  <method name="RegisterWindow">
    <arg name="window" type="u" direction="in"/><arg name="menu" type="o" direction="in"/>
  </method>
  <method name="UnregisterWindow"><arg name="window" type="u" direction="in"/></method>
</interface></node>
"""
ANSWER_MILLISECONDS = 20_000


class Registrar:
    def __init__(self, bus):
        self._bus = bus
        self._menus = []
        interface = Gio.DBusNodeInfo.new_for_xml(DESCRIPTION).interfaces[0]
        bus.register_object(PATH, interface, self._called, None, None)

    def _called(self, _bus, sender, _path, _interface, method, arguments, invocation):
        if method == "RegisterWindow":
            self._menus.append((sender, arguments.unpack()[1]))
        invocation.return_value(None)

    def _ask(self, method, arguments):
        owner, path = self._menus[-1]
        return self._bus.call_sync(owner, path, MENU, method, arguments, None, 0, ANSWER_MILLISECONDS, None).unpack()

    def choose(self, title):
        """Whether there was an item of that title, which is chosen."""
        if not self._menus:
            return False
        _, layout = self._ask("GetLayout", GLib.Variant("(iias)", (0, -1, [])))
        for number, properties in walk(layout):
            # A single underscore marks the letter that is a key.
            label = properties.get("label", "").replace("__", "\0").replace("_", "").replace("\0", "_")
            if label == title and properties.get("enabled", True):
                event = GLib.Variant("(isvu)", (number, "clicked", GLib.Variant("i", 0), 0))
                self._ask("Event", event)
                return True
        return False


def walk(item):
    number, properties, children = item
    yield number, properties
    for child in children:
        yield from walk(child)


def main():
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    registrar = Registrar(bus)
    Gio.bus_own_name_on_connection(bus, NAME, 0, lambda *_: print("ready", flush=True), None)
    loop = GLib.MainLoop()
    threading.Thread(target=loop.run, daemon=True).start()
    for line in sys.stdin:
        print("chosen" if registrar.choose(line.rstrip("\n")) else "none", flush=True)


if __name__ == "__main__":
    main()
