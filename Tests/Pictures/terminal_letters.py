# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Reads a picture of a terminal as the eye does, from left to right: what stands in each cell, told by pictures of the
signs themselves. A terminal that turns right-to-left lines around tells nobody where it has put what."""

import re
import subprocess

# Told apart; `LETTER` stands for any other ink: letters, whose form hangs on their neighbours.
SIGNS = ("0123456789", "[]>.#%:()\",", "٠١٢٣٤٥٦٧٨٩٪", "…”«»")
LETTER = "~"


class TerminalLetters:
    """Learns its signs from the picture of a terminal of that many columns where `SIGNS` stand, a line each, and no
    cursor. Its cells are so far apart that no letter reaches into another one's."""

    # What a terminal leaves free around its cells.
    MARGIN = 1

    def __init__(self, picture, columns):
        self._columns = columns
        width, height = self._size(picture)
        self._width = (width - 2 * self.MARGIN) // columns
        # Below the last line there is a free one.
        self._height = height // (len(SIGNS) + 1)
        self._known = {}
        for signs, row in zip(SIGNS, self._cells(picture)):
            self._known.update(zip(row, signs))
            self._known[row[-1]] = " "
        if len(self._known) != len("".join(SIGNS)) + 1:
            raise AssertionError("two signs look the same")

    @staticmethod
    def _size(picture):
        done = subprocess.run(["identify", "-format", "%w %h", picture], check=True, capture_output=True, text=True)
        return tuple(map(int, done.stdout.split()))

    def _cells(self, picture):
        """For each row the points of each cell."""
        width, height = self._size(picture)
        points = subprocess.run(["convert", picture, "-depth", "8", "gray:-"], check=True, capture_output=True).stdout
        lines = [points[start:start + width] for start in range(0, width * height, width)]
        for top in range(self.MARGIN, height - self._height + 1, self._height):
            yield [
                b"".join(line[left:left + self._width] for line in lines[top:top + self._height])
                for left in range(self.MARGIN, self.MARGIN + self._width * self._columns, self._width)
            ]

    def rows(self, picture):
        """The rows, each run of letters, with the blanks in it, as one `LETTER`."""
        for row in self._cells(picture):
            text = "".join(self._known.get(cell, LETTER) for cell in row).rstrip()
            yield re.sub(f"{LETTER}[ {LETTER}]*{LETTER}", LETTER, text)
