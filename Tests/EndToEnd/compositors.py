# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""Wayland compositors without a screen, and what stands at those that tile."""

import contextlib
import json
import os
import pathlib
import shutil
import subprocess
import tempfile

from support import wait_until

SWAY_SETTINGS = {
    "WLR_BACKENDS": "headless",
    "WLR_RENDERER": "pixman",
    "WLR_LIBINPUT_NO_DEVICES": "1",
    # What is said, on its standard error.
    "WAYLAND_DEBUG": "server",
}
# It does not run as root.
AS_NOBODY = ["setpriv", "--reuid", "nobody", "--regid", "nogroup", "--clear-groups"]


class Compositor:
    def __init__(self, folder, socket):
        self._folder = folder
        self.socket = socket

    def log(self):
        return (self._folder / "log").read_text(errors="replace")

    def control_socket(self):
        return next(self._folder.glob("sway-ipc.*"), None)

    def windows(self):
        """Of one that tiles: as `windows_of`."""
        command = ["swaymsg", "-s", self.control_socket(), "-t", "get_tree"]
        return windows_of(json.loads(subprocess.run(command, check=True, capture_output=True).stdout))


def windows_of(tree, floats=False):
    """The windows below a tree's node: the title of each, whether it floats, and its class or application."""
    found = []
    if tree.get("pid") or tree.get("window"):
        who = tree.get("app_id") or tree.get("window_properties", {}).get("class")
        found.append((tree["name"], floats, who))
    for node in tree["nodes"]:
        found += windows_of(node, floats)
    for node in tree["floating_nodes"]:
        found += windows_of(node, True)
    return found


@contextlib.contextmanager
def _compositor(command, settings, socket):
    folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-way-"))
    environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
    environment.update(settings, HOME=str(folder), XDG_RUNTIME_DIR=str(folder))
    if command[0] == AS_NOBODY[0]:
        shutil.chown(folder, "nobody", "nogroup")
    with open(folder / "log", "w") as log:
        process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=log, stderr=log)
    try:
        yield wait_until(lambda: (folder / socket).exists() and Compositor(folder, folder / socket), 60)
    finally:
        process.terminate()
        process.wait()
        shutil.rmtree(folder)


def weston():
    return _compositor(
        ["weston", "--backend=headless-backend.so", "--socket=zpk-test", "--idle-time=0"], {}, "zpk-test"
    )


@contextlib.contextmanager
def sway():
    with tempfile.NamedTemporaryFile("w", suffix=".conf") as settings:
        settings.write("xwayland disable\noutput * resolution 1280x800\n")
        settings.flush()
        os.chmod(settings.name, 0o644)
        who = AS_NOBODY if os.geteuid() == 0 else []
        with _compositor([*who, "sway", "--config", settings.name], SWAY_SETTINGS, "wayland-1") as compositor:
            wait_until(compositor.control_socket, 60)
            yield compositor
