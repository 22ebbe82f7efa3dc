#!/usr/bin/env python3
"""Tests which faults scripts/mutate seeds into a source."""

import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
import mutations


def changes(text):
    return {m.changed for m in mutations.mutations("a.cpp", text)}


class MutationsTest(unittest.TestCase):
    def test_changes_operators_between_spaces(self):
        self.assertEqual(changes("    x = a < b;"), {"x = a <= b;"})
        self.assertEqual(changes("    std::vector<int> x = f(&a, *b, c->d);"), set())

    def test_changes_numbers_and_truth_values(self):
        self.assertEqual(changes("    return 1'000;"), {"return 1001;"})
        self.assertEqual(changes("    return 0667;"), {"return 0670;"})
        self.assertEqual(changes("    return true;"), {"return false;"})
        self.assertEqual(changes("    QString utf8 = x16;"), set())

    def test_ignores_literals_and_comments(self):
        self.assertEqual(changes('    f("a == b", \'1\'); // 1 < 2'), set())
        self.assertEqual(changes("    QString a = b + u' ';"), set())

    def test_changes_conditions(self):
        self.assertEqual(changes("    if (a) {"), {"if (true || (a)) {", "if (false && (a)) {"})
        self.assertEqual(changes("    if (auto a = f(); a) {"),
                         {"if (auto a = f(); true || (a)) {", "if (auto a = f(); false && (a)) {"})
        self.assertEqual(changes("    if (auto a = f()) {"), set())
        self.assertEqual(changes("    return a ? b : c;"), {"return !a ? b : c;"})
        self.assertEqual(changes("    return !a;"), {"return a;"})

    def test_removes_statements_but_not_declarations(self):
        for statement in ("f(a);", "a.b->c(d);", "a = b;", "static_cast<void>(f());", "break;",
                          "const std::lock_guard lock(mutex_);", "Q_EMIT Satisfied();"):
            self.assertEqual(changes("void f() {\n    " + statement), {";"}, statement)
        for statement in ("QString a(b);", "const auto a = b;", "RequestQueue();"):
            self.assertEqual(changes("void f() {\n    " + statement), set(), statement)

    def test_removes_statement_of_several_lines(self):
        text = "void f() {\n    f(a,\n      b);\n}"
        found, = mutations.mutations("a.cpp", text)
        self.assertEqual(found.original, "f(a, b);")
        self.assertEqual(mutations.apply(text, found), "void f() {\n    ;\n}")

    def test_numbers_equal_lines(self):
        text = "    return true;\n    return true;"
        self.assertEqual([m.original for m in mutations.mutations("a.cpp", text)],
                         ["return true;", "return true; #2"])


if __name__ == "__main__":
    unittest.main()
