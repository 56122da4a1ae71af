#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The setup program of the package in the README's film: a window that says hardly a word, and goes by itself."""

import os
import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import GLib, Gtk  # noqa: E402

STEPS = 8
STEP_MILLISECONDS = 160
LAST_MILLISECONDS = 1500


class Window:
    def __init__(self, name):
        self._done = 0
        self._icon = Gtk.Image.new_from_icon_name("package-x-generic", Gtk.IconSize.DIALOG)
        self._bar = Gtk.LevelBar(max_value=STEPS, mode=Gtk.LevelBarMode.DISCRETE)
        heading = Gtk.Label(xalign=0)
        heading.set_markup(f"<big><b>{GLib.markup_escape_text(name)}</b></big>")
        column = Gtk.Box(orientation=Gtk.Orientation.VERTICAL, spacing=12, valign=Gtk.Align.CENTER)
        column.pack_start(heading, False, False, 0)
        column.pack_start(self._bar, False, False, 0)
        row = Gtk.Box(spacing=18, border_width=24)
        row.pack_start(self._icon, False, False, 0)
        row.pack_start(column, True, True, 0)
        window = Gtk.Window(title=f"{name} – Setup", resizable=False, window_position=Gtk.WindowPosition.CENTER)
        window.set_size_request(420, 150)
        window.add(row)
        window.show_all()
        GLib.timeout_add(STEP_MILLISECONDS, self._step)

    def _step(self):
        self._done += 1
        self._bar.set_value(self._done)
        if self._done < STEPS:
            return GLib.SOURCE_CONTINUE
        self._icon.set_from_icon_name("emblem-ok-symbolic", Gtk.IconSize.DIALOG)
        GLib.timeout_add(LAST_MILLISECONDS, Gtk.main_quit)
        return GLib.SOURCE_REMOVE


os.environ["GTK_THEME"] = "Adwaita"
shown = Window(sys.argv[1])
Gtk.main()
