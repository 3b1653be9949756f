# SPDX-License-Identifier: MIT
"""Each kind of breach is noticed, and what is in order is not."""
import tempfile
import unittest
from pathlib import Path

from test_map import breaches


class TestMap(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        for file in ("base/Date.h", "base/Digits.h", "tests/base/DateTest.cpp",
                     "tests/base/NumberTest.cpp", "tests/e2e/RunTest.cpp"):
            self.add(file)
        self.map("base/Digits", "base/NumberTest")

    def add(self, file):
        path = self.root / file
        path.parent.mkdir(parents=True, exist_ok=True)
        path.touch()

    def map(self, *row):
        readme = self.root / "tests/README.md"
        cells = " | ".join(f"`{cell}`" for cell in row)
        before = readme.read_text() if readme.exists() else "| what | tested by |\n|---|---|\n"
        readme.write_text(before + f"| {cells} |\n")

    def expect(self, *words):
        found = list(breaches(self.root))
        self.assertEqual(len(found), len(words), found)
        for line, word in zip(found, words):
            self.assertIn(word, line)

    def test_is_content_where_each_unit_and_each_test_has_its_place(self):
        self.expect()

    def test_notices_a_unit_that_nothing_tests(self):
        self.add("base/Zone.h")
        self.expect("base/Zone.h")

    def test_notices_a_row_without_a_need(self):
        self.map("base/Date", "base/DateTest")
        self.expect("base/Date needs no row")

    def test_notices_rows_of_what_is_gone(self):
        self.map("base/Gone", "base/GoneTest")
        self.expect("no base/Gone.h", "no tests/base/GoneTest.cpp")

    def test_notices_a_test_that_stands_for_nothing(self):
        self.add("tests/base/OtherTest.cpp")
        self.expect("tests/base/OtherTest.cpp")


if __name__ == "__main__":
    unittest.main()
