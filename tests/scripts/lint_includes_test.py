#!/usr/bin/env python3
"""Each rule of scripts/lint-includes, on small trees that keep it and that break it."""

import pathlib
import subprocess
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "scripts/lint-includes"

ARROWS = """
PORTS = platform platform/values
platform/values:
platform: platform/values
room: $PORTS
room/main.cpp: platform/linux/* <system>
upper: room $PORTS <terminal>
platform/linux/*: platform/linux/* $PORTS <system>
platform/qt: $PORTS <system> <toolkit>
tests/*: * <system> <toolkit>
"""

# Keeps every rule.
HOUSE = {
    "platform/values/Path.h": "#include <string>",
    "platform/Port.h": '#include "platform/values/Path.h"',
    "room/Room.h": '#include "platform/Port.h"',
    "room/Room.cpp": '#include "room/Room.h"\n#include <vector>',
    "room/main.cpp": '#include "platform/linux/a/A.h"\n#include <malloc.h>',
    "upper/Table.cpp": '#include "room/Room.h"\n#include <wchar.h>',
    "platform/linux/a/A.h": '#include "platform/Port.h"\n#include <unistd.h>',
    "platform/linux/b/B.h": '#include "platform/linux/a/A.h"',
    "platform/qt/Window.h": "#include <QtWidgets/QWidget>",
    "tests/room/RoomTest.cpp": '#include "platform/linux/a/A.h"\n#include <QtWidgets/QWidget>',
    "room/CMakeLists.txt": "quennel_library(room LINK ports)",
    "platform/CMakeLists.txt": "add_library(ports INTERFACE)",
    "platform/linux/a/CMakeLists.txt": "quennel_library(linux_a LINK ports)",
    "platform/linux/b/CMakeLists.txt": "quennel_library(linux_b\n  LINK ports linux_a)",
}


class LintIncludesTest(unittest.TestCase):
    def complaints(self, changes):
        """What the script says of the house with these files instead of its own, or beside them."""
        with tempfile.TemporaryDirectory() as tree:
            for name, text in {**HOUSE, "scripts/arrows": ARROWS, **changes}.items():
                path = pathlib.Path(tree, name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text + "\n", encoding="utf-8")
            subprocess.run(["git", "init", "-q", tree], check=True)
            subprocess.run(["git", "-C", tree, "add", "-A"], check=True)
            run = subprocess.run([SCRIPT], cwd=tree, capture_output=True, text=True, check=False)
            self.assertEqual(run.stderr, "")
            self.assertEqual(run.returncode, 1 if run.stdout else 0)
            return run.stdout.splitlines()

    def test_a_tree_that_keeps_every_rule_passes(self):
        self.assertEqual(self.complaints({}), [])

    def test_an_include_against_the_arrows_is_refused(self):
        self.assertEqual(
            self.complaints({"room/Room.cpp": '#include "platform/linux/a/A.h"'}),
            ["room/Room.cpp: may not include platform/linux/a/A.h"],
        )

    def test_a_port_may_not_know_its_adapter(self):
        self.assertEqual(
            self.complaints({"platform/Other.h": '#include "platform/qt/Window.h"'}),
            ["platform/Other.h: may not include platform/qt/Window.h"],
        )

    def test_adapters_have_arrows_too(self):
        self.assertEqual(
            self.complaints({"platform/linux/b/B.cpp": '#include "room/Room.h"'}),
            ["platform/linux/b/B.cpp: may not include room/Room.h"],
        )

    def test_only_the_file_that_is_named_may_name_adapters(self):
        self.assertEqual(
            self.complaints({"upper/main.cpp": '#include "platform/linux/a/A.h"'}),
            ["upper/main.cpp: may not include platform/linux/a/A.h"],
        )

    def test_a_folder_without_arrows_is_refused(self):
        self.assertEqual(
            self.complaints({"attic/Box.cpp": "#include <string>"}),
            ["attic: has no line in scripts/arrows"],
        )

    def test_headers_of_the_system_stay_in_the_adapters(self):
        self.assertEqual(
            self.complaints({"room/Room.cpp": "#include <unistd.h>"}),
            ["room/Room.cpp: may not include <unistd.h>"],
        )
        self.assertEqual(
            self.complaints({"room/Room.cpp": "#include <wchar.h>"}),
            ["room/Room.cpp: may not include <wchar.h>"],
        )

    def test_the_toolkit_stays_in_its_module(self):
        self.assertEqual(
            self.complaints({"platform/linux/a/A.cpp": "#include <QtCore/QString>"}),
            ["platform/linux/a/A.cpp: the toolkit stays in platform/qt (QtCore/QString)"],
        )

    def test_includes_are_written_from_the_root(self):
        self.assertEqual(
            self.complaints({"room/Room.cpp": '#include "Room.h"'}),
            ['room/Room.cpp: "Room.h" is not a path from the project\'s root'],
        )

    def test_a_header_and_its_source_are_one_module(self):
        self.assertEqual(
            self.complaints(
                {
                    "room/Door.h": "#include <string>",
                    "room/Door.cpp": '#include "room/Room.h"',
                    "room/Room.h": '#include "room/Door.h"',
                }
            ),
            ["modules in a circle: room/Door -> room/Room -> room/Door"],
        )

    def test_the_pieces_of_a_class_are_one_module(self):
        self.assertEqual(
            self.complaints(
                {
                    "room/Door.h": "#include <string>",
                    "room/Door+Lock.cpp": '#include "room/Room.h"',
                    "room/Room.h": '#include "room/Door.h"',
                }
            ),
            ["modules in a circle: room/Door -> room/Room -> room/Door"],
        )

    def test_folders_in_a_circle_are_refused(self):
        self.assertEqual(
            self.complaints({"platform/linux/a/Other.h": '#include "platform/linux/b/B.h"'}),
            ["folders in a circle: platform/linux/a -> platform/linux/b -> platform/linux/a"],
        )

    def test_libraries_in_a_circle_are_refused(self):
        self.assertEqual(
            self.complaints(
                {
                    "platform/linux/a/CMakeLists.txt": "quennel_library(linux_a LINK ports)\n"
                    "target_link_libraries(linux_a PRIVATE linux_b)"
                }
            ),
            ["libraries in a circle: linux_a -> linux_b -> linux_a"],
        )

    def test_a_library_may_link_only_where_an_arrow_goes(self):
        self.assertEqual(
            self.complaints({"room/CMakeLists.txt": "quennel_library(room LINK ports linux_a)"}),
            ["room/CMakeLists.txt: room may not link linux_a"],
        )


if __name__ == "__main__":
    unittest.main()
