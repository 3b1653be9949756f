#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Shows that scripts/mutate makes the mutants that it says it makes, the same ones each time."""
import importlib.machinery
import importlib.util
import pathlib
import sys
import types
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.dont_write_bytecode = True
LOADER = importlib.machinery.SourceFileLoader("mutate", str(ROOT / "scripts/mutate"))
mutate = importlib.util.module_from_spec(importlib.util.spec_from_loader("mutate", LOADER))
sys.modules["mutate"] = mutate
LOADER.exec_module(mutate)


class Lines(unittest.TestCase):
    def expect(self, line, *mutants):
        self.assertEqual(sorted(set(mutate.changed_lines(line))), sorted(mutants))

    def test_conditions_are_negated(self):
        self.expect("  if (a(b)) return;", "  if (!(a(b))) return;")
        self.expect("  while (a) {", "  while (!(a)) {")
        self.expect("  if (auto a = b(); a) {", "  if (auto a = b(); !(a)) {")
        self.expect("  if (const auto a = b()) {", "  if (const auto a = b(); false) {")

    def test_bounds_and_literals_are_moved(self):
        self.expect("  x = a < b;", "  x = a <= b;")
        self.expect("  x = a >= b;", "  x = a > b;")
        self.expect("  x = 1;", "  x = 0;", "  x = 2;")
        self.expect("  x = true;", "  x = false;")
        self.expect("  x = a && b;", "  x = a || b;")

    def test_calls_are_dropped(self):
        self.expect("  a.b(c);", "  ;")
        self.expect("  (void)a->b(c);", "  ;")
        self.expect("  return b(c);")
        self.expect("  Thing thing(c);")

    def test_texts_comments_and_templates_are_left_alone(self):
        self.expect('  x = "1 < 2 && true";  // 3 == 4')
        self.expect("  std::vector<int> x = y;")

    def test_adjacent_statements_are_swapped(self):
        self.assertTrue(mutate.can_swap("  a();", "  b = c;"))
        self.assertFalse(mutate.can_swap("  a();", "    b();"))
        self.assertFalse(mutate.can_swap("  const int a = b();", "  c(a);"))
        self.assertFalse(mutate.can_swap("  a();", "  return;"))


class Choice(unittest.TestCase):
    def chosen(self, seed):
        return mutate.chosen(types.SimpleNamespace(file=[], seed=seed))

    def test_depends_on_the_seed_alone(self):
        self.assertEqual(self.chosen(7), self.chosen(7))
        self.assertNotEqual(self.chosen(7), self.chosen(8))
        self.assertEqual(set(self.chosen(7)), set(self.chosen(8)))

    def test_each_changes_the_file_that_it_names(self):
        mutants = self.chosen(1)
        self.assertEqual({mutant.file.split("/")[0] for mutant in mutants}, set(mutate.ROOMS))
        for mutant in mutants:
            lines = (ROOT / mutant.file).read_text().splitlines()
            self.assertNotEqual(mutant.applied_to(lines), lines)


if __name__ == "__main__":
    unittest.main()
