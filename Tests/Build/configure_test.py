# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

"""The project configured as packagers, vendors and other projects do it; nothing is compiled."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import textwrap
import unittest

SOURCE = pathlib.Path(os.environ["ZPK_SOURCE_DIR"]).resolve()


def define_state(command, macro):
    """Whether the command line leaves the macro defined: the last word counts."""
    words = re.findall(r"-([DU])%s\b" % macro, command)
    return bool(words) and words[-1] == "D"


class ConfigureTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zpk-configure-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.build = self.folder / "build"

    def configure(self, *arguments, source=SOURCE):
        done = subprocess.run(
            ["cmake", *map(str, arguments), "-B", self.build], cwd=source, capture_output=True, text=True
        )
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def commands(self):
        entries = json.loads((self.build / "compile_commands.json").read_text())
        self.assertGreater(len(entries), 100)
        return {os.path.relpath(entry["file"], SOURCE): entry["command"] for entry in entries}

    def assert_assertions_live(self):
        silenced = [name for name, command in self.commands().items() if define_state(command, "NDEBUG")]
        self.assertEqual(silenced, [])

    def targets(self):
        done = subprocess.run(
            ["cmake", "--build", self.build, "--target", "help"], capture_output=True, text=True, check=True
        )
        return {line.split(":")[0] for line in done.stdout.splitlines()}

    def test_smallest_build_keeps_its_assertions(self):
        self.configure("-G", "Ninja", "-DCMAKE_BUILD_TYPE=MinSizeRel")
        self.assertIn(" -Os ", self.commands()["Common/CXMLElement.cpp"])
        self.assert_assertions_live()

    def test_flags_from_outside_cannot_silence_assertions(self):
        self.configure("-G", "Ninja", "-DCMAKE_CXX_FLAGS=-DNDEBUG", "-DZPK_BUILD_TESTS=OFF")
        self.assertIn("-DNDEBUG", self.commands()["Common/CXMLElement.cpp"])
        self.assert_assertions_live()

    def test_release_preset_needs_only_what_a_build_needs(self):
        absent = ["benchmark", "pugixml", "GTest"]
        self.configure("--preset", "release", *(f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in absent))
        targets = self.targets()
        self.assertIn("Zephyrkit", targets)
        self.assertIn("example_package", targets)
        self.assertNotIn("zpk_core_test", targets)
        self.assertNotIn("zpk_description_benchmark", targets)

    def test_release_preset_builds_the_tests_where_their_packages_are(self):
        self.configure("--preset", "release")
        self.assertIn("zpk_core_test", self.targets())

    def test_project_can_be_a_folder_of_another(self):
        outer = self.folder / "outer"
        outer.mkdir()
        (outer / "Inner").symlink_to(SOURCE)
        (outer / "outer.cpp").write_text("int main() {}\n")
        (outer / "CMakeLists.txt").write_text(
            textwrap.dedent(
                """\
                cmake_minimum_required(VERSION 3.25)
                project(Outer LANGUAGES CXX)
                set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
                add_compile_definitions(NDEBUG)
                add_subdirectory(Inner)
                add_executable(outer outer.cpp)
                file(WRITE ${CMAKE_BINARY_DIR}/seen "[${CMAKE_BUILD_TYPE}] [${CMAKE_CXX_STANDARD}]")
                """
            )
        )
        self.configure("-G", "Ninja", source=outer)
        self.assertEqual((self.build / "seen").read_text(), "[] []", "the other project's settings changed")
        self.assertEqual(
            sorted(path.name for path in self.build.iterdir() if path.name.endswith(".app")), [], "outside Inner"
        )
        self.assertTrue((self.build / "Inner/Zephyrkit.app/Contents/Info.plist").is_file())
        targets = self.targets()
        self.assertLessEqual({"Zephyrkit", "zpkpack"}, targets)
        self.assertEqual({"zpk_core_test", "example_package"} & targets, set(), "nobody asked for it")

        commands = json.loads((self.build / "compile_commands.json").read_text())
        own = [entry["command"] for entry in commands if entry["file"].endswith("Common/CXMLElement.cpp")]
        self.assertEqual(len(own), 1)
        self.assertFalse(define_state(own[0], "NDEBUG"))
        self.assertRegex(own[0], r"-ffile-prefix-map=\S+/Inner/=")
        outers = [entry["command"] for entry in commands if entry["file"].endswith("outer.cpp")]
        self.assertTrue(define_state(outers[0], "NDEBUG"))
        self.assertNotIn("-ffile-prefix-map", outers[0])


if __name__ == "__main__":
    unittest.main(verbosity=2)
