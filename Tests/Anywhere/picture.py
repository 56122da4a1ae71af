# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Pictures of windows, taken from outside of the room, and how far two of them are apart."""

import contextlib
import math
import os
import pathlib
import subprocess
import tempfile

HERE = pathlib.Path(__file__).parent
# Points that are less apart count as the same.
FUZZ = "15%"


class Picture:
    def __init__(self, data):
        self._data = data

    @classmethod
    def of_window(cls, display, window):
        done = subprocess.run(
            ["import", "-window", window, "-define", "png:exclude-chunks=date,time", "png:-"],
            env=dict(os.environ, DISPLAY=display),
            capture_output=True,
        )
        return cls(done.stdout)

    def keep(self, name):
        """Leaves the picture in the folder that ZPK_TEST_SCREENSHOTS names, if any."""
        folder = os.environ.get("ZPK_TEST_SCREENSHOTS")
        if folder and self._data:
            pathlib.Path(folder, name + ".png").write_bytes(self._data)

    def _identify(self, what):
        done = subprocess.run(
            ["identify", "-format", what, "-"], input=self._data, capture_output=True, text=False
        )
        return done.stdout.decode()

    def size(self):
        return tuple(int(part) for part in (self._identify("%w %h") or "0 0").split())

    def has_only(self, colour):
        """Whether there is a picture, and all of it in that colour."""
        return self._identify("%k") == "1" and self._identify("%[hex:u.p{0,0}]")[:6] == colour[1:]

    def without(self, background):
        """The part of the picture that is not all of that colour; an empty picture when there is none."""
        if not self._data or self.has_only(background):
            return Picture(b"")
        done = subprocess.run(
            ["convert", "-", "-bordercolor", background, "-border", "1", "-trim", "+repage", "png:-"],
            input=self._data,
            capture_output=True,
        )
        return Picture(done.stdout)

    def resembles(self, other):
        """A window of about that size with something on it: what can be said where the fonts differ."""
        ratios = [mine / theirs for mine, theirs in zip(self.size(), other.size())]
        return all(0.6 < ratio < 1.7 for ratio in ratios) and int(self._identify("%k") or 0) > 20

    @contextlib.contextmanager
    def _files(self, other):
        with tempfile.TemporaryDirectory() as folder:
            paths = [pathlib.Path(folder, name) for name in ("mine.png", "theirs.png", "background.png")]
            for path, data in zip(paths, (self._data, other._data)):
                path.write_bytes(data)
            yield paths

    def difference_in_a_place(self, other, side):
        """How many points differ, as a part of those of the square of that side where most do."""
        if self.size() != other.size():
            return 1.0
        squares = "%dx%d!" % tuple(math.ceil(length / side) for length in self.size())
        with self._files(other) as (mine, theirs, _):
            command = ["convert", mine, theirs, "-compose", "difference", "-composite", "-separate"]
            command += ["-evaluate-sequence", "max", "-threshold", FUZZ, "-scale", squares]
            return float(subprocess.check_output([*command, "-format", "%[fx:maxima]", "info:"]))

    def difference(self, other):
        """How many points differ, as a part of those of the other one that are not background."""
        if self.size() != other.size():
            return 1.0
        with self._files(other) as paths:
            # The whole in the colour of the first point.
            subprocess.run(["convert", paths[1], "-crop", "1x1+0+0", "-scale", "%dx%d!" % other.size(), paths[2]], check=True)
            return different_points(paths[0], paths[1]) / max(1, different_points(paths[2], paths[1]))


def different_points(first, second):
    done = subprocess.run(
        ["compare", "-metric", "AE", "-fuzz", FUZZ, first, second, "null:"], capture_output=True, text=True
    )
    return float(done.stderr)


def reference(name):
    """The picture that was taken on bookworm with no fonts but the carried one."""
    return Picture((HERE / "pictures" / (name + ".png")).read_bytes())
