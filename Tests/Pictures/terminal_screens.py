#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Pictures of programs on a terminal that turns right-to-left lines around (VTE), on the X server of DISPLAY.

  terminal_screens.py FILE

The file holds chains in JSON, lists of screens that are made one after the other; up to six chains are made side by
side, in two columns of a screen of 3760x2220, or a multiple of that for GDK_SCALE. A screen is
  {"command": [...], "environment": {...}, "columns": 80, "rows": 20, "dark": true, "until": [TEXT, COUNT],
   "typed": [KEYS, ...], "picture": PATH, "spacing": 1.0}
and its picture is taken when the text stands there so many times, or without one when the program has ended. The keys
are typed when it stands there once, twice, and so on. With a spacing, which may be left out, its cells are so many
times as wide and as high as their letters need, up to 2.
"""

import json
import sys

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
gi.require_version("Vte", "2.91")
from gi.repository import Gdk, GLib, Gtk, Pango, Vte  # noqa: E402

PALETTES = {True: ("#d0d0d0", "#101418"), False: ("#202020", "#ffffff")}
# What another window covers is not drawn.
PLACES = [(0, 0), (1880, 0), (0, 740), (1880, 740), (0, 1480), (1880, 1480)]
# A screen is whole when two looks at it find the same text, and it is drawn.
LOOK_MILLISECONDS = 150
LIMIT_LOOKS = 400


def colour(text):
    made = Gdk.RGBA()
    made.parse(text)
    return made


class Screen:
    """One program on one terminal; calls `done` with whether its picture was taken."""

    def __init__(self, row, place, done):
        self._row = row
        self._done = done
        self._ended = False
        self._seen = None
        self._drawn = None
        self._typed = 0
        self._looks = 0
        self._window = Gtk.Window(type=Gtk.WindowType.POPUP)
        self._terminal = Vte.Terminal()
        self._terminal.set_size(row["columns"], row["rows"])
        self._terminal.set_font(Pango.FontDescription("DejaVu Sans Mono 11"))
        self._terminal.set_cell_width_scale(row.get("spacing", 1.0))
        self._terminal.set_cell_height_scale(row.get("spacing", 1.0))
        self._terminal.set_cursor_blink_mode(Vte.CursorBlinkMode.OFF)
        self._terminal.set_colors(*map(colour, PALETTES[row["dark"]]), [])
        self._terminal.connect("child-exited", self._end)
        self._window.add(self._terminal)
        self._window.move(*place)
        self._window.show_all()
        self._terminal.get_frame_clock().connect("after-paint", self._note_drawn)
        # The terminal's own environment names a display.
        environment = [f"{name}={value}" for name, value in row["environment"].items()]
        command = ["/usr/bin/env", "-i", *environment, *row["command"]]
        self._terminal.spawn_async(Vte.PtyFlags.DEFAULT, None, command, None,
                                   GLib.SpawnFlags.DEFAULT, None, None, -1, None, self._started)
        GLib.timeout_add(LOOK_MILLISECONDS, self._look)

    def _started(self, _, pid, error):
        if pid == -1:
            print(self._row["command"], error.message, file=sys.stderr)
            self._looks = LIMIT_LOOKS

    def _note_drawn(self, *_):
        self._drawn = self._terminal.get_text()[0]

    def _end(self, *_):
        self._ended = True

    def _look(self):
        self._looks += 1
        text = self._terminal.get_text()[0]
        is_there = text == self._seen == self._drawn and self._is_whole(text)
        self._seen = text
        if not is_there and self._looks < LIMIT_LOOKS:
            return GLib.SOURCE_CONTINUE
        if is_there:
            self._take_picture(len(text.rstrip().split("\n")) + 1)
        else:
            print("no picture", self._row["picture"], "of", repr(text), file=sys.stderr)
        # The next one may find nothing of this one, as Ctrl-C leaves it.
        self._terminal.feed_child(b"\x03")
        GLib.timeout_add(LOOK_MILLISECONDS // 6, self._close, is_there)
        return GLib.SOURCE_REMOVE

    def _is_whole(self, text):
        if not self._row["until"]:
            return self._ended
        words, count = self._row["until"]
        typed = self._row["typed"]
        if self._typed < len(typed) and text.count(words) > self._typed:
            self._terminal.feed_child(typed[self._typed].encode())
            self._typed += 1
        return text.count(words) == count

    def _take_picture(self, lines):
        drawn = self._window.get_window()
        height = min(lines * self._terminal.get_char_height(), drawn.get_height())
        picture = Gdk.pixbuf_get_from_window(drawn, 0, 0, drawn.get_width(), height)
        picture.savev(self._row["picture"], "png", [], [])

    def _close(self, is_there):
        self._looks += 1
        if not self._ended and self._looks < 2 * LIMIT_LOOKS:
            return GLib.SOURCE_CONTINUE
        self._window.destroy()
        self._done(is_there)
        return GLib.SOURCE_REMOVE


class Chains:
    def __init__(self, chains):
        self.failed = 0
        self._running = len(chains)
        for place, chain in zip(PLACES[:len(chains)], chains, strict=True):
            self._next(chain, place)

    def _next(self, chain, place):
        if chain:
            Screen(chain[0], place, lambda taken: self._after(chain[1:], place, taken))
            return
        self._running -= 1
        if self._running == 0:
            Gtk.main_quit()

    def _after(self, rest, place, taken):
        self.failed += not taken
        self._next(rest, place)


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        waiting = json.load(file)
    made = []
    GLib.idle_add(lambda: made.append(Chains(waiting)))
    Gtk.main()
    return 1 if made[0].failed else 0


if __name__ == "__main__":
    sys.exit(main())
