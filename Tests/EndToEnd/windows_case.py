# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""One run on real windows, and what the tests of such runs share.

With ZPK_TEST_SCREENSHOTS naming a folder, a picture of each window in each language is left there.
"""

import contextlib
import os
import pathlib
import re
import signal
import subprocess
import textwrap
from xml.sax.saxutils import quoteattr

from mocked_drive import MockedDrive
from support import STAGING_NAME, PackageTestCase, wait_until, write
from windows import FolderWatch, Gate, WindowLog, desktop, focused, items, walk

HERE = pathlib.Path(__file__).parent
ESCAPES = {"n": "\n", '"': '"', "\\": "\\"}
SIGNATURE = "Example Studio 4"
PRODUCTS = ["Example Studio 4", 'A <b>bold</b> & "quoted" &amp; name', "製品 ٣ Ω"]

# Locales need not be installed: the launcher reads the variables alone.
LANGUAGES = {
    "en": {"LC_ALL": "", "LANGUAGE": "", "LANG": "en_US.UTF-8"},
    "ja": {"LC_ALL": "ja_JP.UTF-8"},
    "ar": {"LC_ALL": "C.UTF-8", "LANGUAGE": "xx:ar_EG"},
}

# Lets the launcher's unpacking wait where a test wants it to, then does the real work.
HELD_ARCHIVE_TOOL = textwrap.dedent(
    """\
    #!/bin/sh
    for argument; do
        case $argument in */{archive}) read -r line < '{gate}' ;; esac
    done
    exec "${{0%/*}}/ditto.real" "$@"
    """
)


def string_table(bundle, language):
    """The texts of one language, as the bundle carries them."""
    table = bundle / "Contents/Resources/UILang" / language / "ZPKStringTable.def"
    rows = re.findall(r'^"(\w+)" = "((?:[^"\\]|\\.)*)";$', table.read_text(encoding="utf-8"), re.MULTILINE)
    return {
        key.removeprefix("ZPKString_"): re.sub(r"\\(.)", lambda found: ESCAPES[found[1]], text)
        for key, text in rows
    }


def paragraphs(text):
    """A text as an alert shows it: in parts, lists without their indent."""
    parts = [part for part in text.split("\n\n") if part.strip()]
    return [re.sub("^  ", "", part, flags=re.MULTILINE) if part.startswith("  ") else part for part in parts]


def plain(text):
    """Without the marks that keep the direction of each line of a list."""
    return text.translate({0x2068: None, 0x2069: None})


def shown_texts(window):
    """What the labels and the parts that scroll say, from the top to the bottom."""
    found = [item for item in walk(window) if item["role"] in ("label", "text") and "showing" in item["states"]]
    found.sort(key=lambda item: item["bounds"][1])
    return [item["name"] if item["role"] == "label" else plain(item["text"]) for item in found]


class Run:
    """One run of the launcher, watched from before its start to its end.

    `command` goes before the launcher, and becomes it; variables are as for `environment`.
    """

    def __init__(self, case, bundle, *, drive=None, command=(), language="en", **variables):
        self._case = case
        self._drive = drive
        # A title that names the launcher names the package.
        self.texts = {key: text.replace("Zephyrkit", case.name) for key, text in string_table(bundle, language).items()}
        self.temporary = pathlib.Path(variables.get("TMPDIR", case.temporary))
        self._made = self.temporary.stat().st_mtime_ns
        self._watch = FolderWatch(self.temporary / STAGING_NAME)
        self._log = WindowLog(case.desktop)
        self.process = subprocess.Popen(
            [*(drive.command() if drive else command), bundle / "Contents/Linux/Zephyrkit"],
            env=case.environment(**{**case.desktop.variables, **variables}),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            cwd=case.folder,
            start_new_session=True,
        )
        self.staging = self.shown = self.titles = None

    def window(self, title, role=None):
        """The window of that title, once it is shown and takes the keys."""

        def look():
            for window in self.windows():
                if window["name"] == title and "active" in window["states"] and role in (None, window["role"]):
                    return window
            if self.process.poll() is not None:
                raise AssertionError("the launcher ended with %s instead" % self.process.returncode)
            return None

        return wait_until(look, 60)

    def alert(self):
        return self.window(self._case.name, "alert")

    def disc_window(self):
        return self.window(self.texts["DISCCHECK_TITLE"], "dialog")

    def windows(self):
        number = self._drive.process() if self._drive else self.process.pid
        found = self._case.desktop.windows(number) if number else []
        return [window for window in found if "showing" in window["states"]]

    def seen_staging(self):
        return self._watch.states()

    def wait_focus(self, title, item):
        """Until the item of the window has the keys; `item` is a role and a name."""
        found = []

        def has_focus():
            found.append(focused(self.window(title)))
            return found[-1] == item

        try:
            wait_until(has_focus, 60)
        except AssertionError:
            self._case.fail("%r has the keys, not %r" % (found[-1], item))

    def wait(self):
        """Until the end; checks that it went well and that nothing stays."""
        self._case.assertEqual(self.process.wait(timeout=60), 0)
        self.stop()
        self._case.assertEqual(os.listdir(self.temporary), [])

    def assert_unseen(self):
        """After the end: no window came, and nothing was made in the temporary folder."""
        self._case.assertEqual(self.shown, [])
        self._case.assertEqual(self.staging, [False])
        self._case.assertEqual(self.temporary.stat().st_mtime_ns, self._made)

    def stop(self):
        if self.staging is None:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(self.process.pid, signal.SIGKILL)
            self.process.wait()
            self.staging = self._watch.stop()
            self.shown = self._log.stop()
            self.titles = [title for title, can_close in self.shown if self._lasts(title, can_close)]

    def _lasts(self, title, can_close):
        """False for the window of a search, which may be gone before it has its title."""
        return title == self.texts["FILE_EXTRACT"] or (
            can_close and title not in ("", self.texts["DISCCHECK_SERACHING"])
        )


class WindowTestCase(PackageTestCase):
    """A test at a desktop that the tests of its class share."""

    # The command of another window manager than the usual one.
    manager = None

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        with contextlib.ExitStack() as stack:
            cls.desktop = stack.enter_context(desktop(manager=cls.manager))
            cls.addClassCleanup(stack.pop_all().close)

    def start(self, bundle, **options):
        run = Run(self, bundle, **options)
        self.addCleanup(run.stop)
        return run

    def start_in(self, language, bundle, **options):
        return self.start(bundle, language=language, **LANGUAGES[language], **options)

    def picture(self, name, language):
        folder = os.environ.get("ZPK_TEST_SCREENSHOTS")
        if folder:
            self.desktop.screenshot(pathlib.Path(folder, "%s-%s.png" % (name, language)))

    def listen(self, program, log, **variables):
        """Has one of the programs that stand here write to the file what it sees of the desktop from now on."""
        with open(log, "a") as output:
            listener = subprocess.Popen([HERE / program], env={**self.desktop.environment, **variables}, stdout=output)
        self.addCleanup(listener.wait)
        self.addCleanup(listener.terminate)
        wait_until(lambda: log.read_text().startswith("ready\n"), 60)

    def drive(self):
        reason = MockedDrive.missing()
        if reason:
            self.skipTest(reason)
        return MockedDrive(self.folder)

    # Packages

    def package(self, conditions=None, products=PRODUCTS, name="TestSetup.app"):
        """A package with a setup program, and with conditions when any are given."""
        if conditions is not None:
            listed = "".join("<ItemInfo DisplayName=%s/>" % quoteattr(product) for product in products)
            write(
                self.source / "Info/Condition.xml",
                "<UpdateInfo><Conditions>%s</Conditions><TargetItems>%s</TargetItems></UpdateInfo>"
                % (conditions, listed),
            )
        self.recorder()
        self.startup()
        return self.pack(name)

    def hold(self, bundle, archive):
        """The launcher will wait before it unpacks that archive, until the gate is opened."""
        gate = Gate(self.folder / ("gate-%d" % len(list(self.folder.glob("gate-*")))))
        tool = bundle / "Contents/Helpers/ditto"
        tool.rename(tool.with_name("ditto.real"))
        write(tool, HELD_ARCHIVE_TOOL.format(archive=archive, gate=gate.path), 0o755)
        return gate

    # Looks at windows

    def assert_alert(self, run, text):
        """An alert with that text and one button, which is the default and has the keys."""
        window = run.alert()
        self.assertEqual(shown_texts(window), paragraphs(text))
        buttons = items(window, "push button")
        self.assertEqual([button["name"] for button in buttons], [run.texts["OK"]])
        self.assertLessEqual({"default", "focused", "enabled"}, set(buttons[0]["states"]))
        return window

    def assert_progress_labels(self, window):
        """The product's name, and, when it takes longer, the time."""
        name, *time = shown_texts(window)
        self.assertEqual(name, self.name)
        for text in time:
            self.assertRegex(text, r"^\d+:\d\d$")

    def assert_tab_order(self, run, title, *order):
        """The items that Tab visits, from the one that has the keys and round to it again."""
        run.wait_focus(title, order[0])
        for item in [*order[1:], order[0]]:
            self.desktop.key("Tab")
            run.wait_focus(title, item)

    def assert_inside_screen(self, item):
        x, y, width, height = item["bounds"]
        self.assertGreaterEqual(min(x, y), 0)
        self.assertLessEqual(x + width, 1280)
        self.assertLessEqual(y + height, 800)

    def assert_installed(self, run, *titles):
        """After the end: the windows that came, and the setup program ran once."""
        self.assertEqual(run.titles, [*titles, run.texts["FILE_EXTRACT"]])
        self.assertEqual(run.staging, [False, True, False])
        self.record()
