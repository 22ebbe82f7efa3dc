#!/usr/bin/env python3
"""Tests that check_corpora.py reports each kind of fault: puts faults, one at a time, into a small
tree without findings."""

import tempfile
import unittest
from pathlib import Path

import check_corpora

TREE = {
    "fuzz/CMakeLists.txt": b"quorin_fuzzer(json SOURCES json_fuzzer.cpp LINKS quorin_json)\n",
    "fuzz/corpus/json/nested": b"[[]]",
    "fuzz/corpus/json/large": bytes(check_corpora.MAX_FILE),
}

# files, the only finding
FAULTS = [
    ({"fuzz/CMakeLists.txt": TREE["fuzz/CMakeLists.txt"] + b"quorin_fuzzer(pem SOURCES a.cpp)\n"},
     "fuzz/corpus/pem contains no input"),
    ({"fuzz/corpus/pem/rsa": b"-"}, "fuzz/corpus/pem has no fuzzer"),
    ({"fuzz/corpus/json/large": bytes(check_corpora.MAX_FILE + 1)},
     "fuzz/corpus/json/large has 65537 bytes, more than 65536"),
    ({f"fuzz/corpus/json/{i}": bytes(check_corpora.MAX_FILE) for i in range(31)},
     "fuzz/corpus has 2097156 bytes, more than 2097152"),
]


class CheckCorporaTest(unittest.TestCase):
    def check(self, changes):
        with tempfile.TemporaryDirectory() as folder:
            for name, content in {**TREE, **changes}.items():
                file = Path(folder, name)
                file.parent.mkdir(parents=True, exist_ok=True)
                file.write_bytes(content)
            return check_corpora.findings(Path(folder))

    def test_accepts_tree_without_faults(self):
        self.assertEqual(self.check({}), [])

    def test_reports_each_fault(self):
        for changes, finding in FAULTS:
            with self.subTest(finding):
                self.assertEqual(self.check(changes), [finding])


if __name__ == "__main__":
    unittest.main()
