#!/usr/bin/env python3
"""The pre-commit hook in a repository of its own, whose lint refuses every file that says "bad"."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

HOOK = pathlib.Path(__file__).resolve().parents[2] / "scripts/hooks/pre-commit"
LINT = """#!/bin/bash
[ "$1" = --quick ] || exit 3
cd "$(dirname "$0")/.."
for file in $(git ls-files '*.cpp'); do ! grep -q bad "$file" || exit 1; done
"""


class PreCommitTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = pathlib.Path(folder.name)
        self.git("init", "-q")
        (self.tree / "scripts/hooks").mkdir(parents=True)
        shutil.copy(HOOK, self.tree / "scripts/hooks")
        self.write("scripts/lint", LINT)
        (self.tree / "scripts/lint").chmod(0o755)
        self.write("a.cpp", "good")
        self.git("add", "-A")
        self.git("config", "core.hooksPath", "scripts/hooks")

    def git(self, *words):
        names = {name: "me" for name in ("GIT_AUTHOR_NAME", "GIT_COMMITTER_NAME")}
        mails = {name: "me@here" for name in ("GIT_AUTHOR_EMAIL", "GIT_COMMITTER_EMAIL")}
        # A hook that runs these tests has told where its own repository is.
        outer = {name: value for name, value in os.environ.items() if not name.startswith("GIT_")}
        command = ["git", "-C", self.tree, *words]
        run = subprocess.run(command, env={**outer, **names, **mails}, capture_output=True, check=False)
        return run.returncode

    def write(self, name, text):
        (self.tree / name).write_text(text, encoding="utf-8")

    def test_a_commit_that_the_lint_accepts_is_made(self):
        self.assertEqual(self.git("commit", "-m", "one"), 0)

    def test_a_commit_that_the_lint_refuses_is_not_made(self):
        self.write("a.cpp", "bad")
        self.git("add", "-A")
        self.assertNotEqual(self.git("commit", "-m", "one"), 0)
        self.assertNotEqual(self.git("rev-parse", "HEAD"), 0)

    def test_what_is_not_committed_does_not_count(self):
        self.write("a.cpp", "bad")
        self.write("new.cpp", "bad")
        self.assertEqual(self.git("commit", "-m", "one"), 0)

    def test_what_is_committed_counts_also_when_it_was_mended_since(self):
        self.write("a.cpp", "bad")
        self.git("add", "-A")
        self.write("a.cpp", "good")
        self.assertNotEqual(self.git("commit", "-m", "one"), 0)

    def test_a_commit_of_all_that_was_changed_is_looked_at(self):
        self.assertEqual(self.git("commit", "-m", "one"), 0)
        self.write("a.cpp", "bad")
        self.assertNotEqual(self.git("commit", "-a", "-m", "two"), 0)


if __name__ == "__main__":
    unittest.main()
