#!/usr/bin/env python3
"""Tests that check_settings.py reports each kind of fault: puts faults, one at a time, into copies
of the table and the documents.

usage: check_settings_test.py TREE
"""

import contextlib
import io
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

import check_settings
from check_settings import MANUAL, NAMES, PAGE, SAMPLE, TABLE

TREE = Path(sys.argv.pop(1)).resolve()

# file, text, its replacement, expected finding
FAULTS = [
    (NAMES, '"QueueSize"', '"Queue"', f"{NAMES}: lacks QueueSize"),
    (NAMES, '"QueueSize"', '"Queue"', f"{TABLE}: lacks Queue"),
    (TABLE, "Http/Port", "Http/TcpPort", f"{TABLE}: lacks Port"),
    (TABLE, "\tbytes\t", "\tKiB\t", f"{PAGE}: states another unit of Http/ThreadReadBufferSize"),
    (SAMPLE, "<Port>8080</Port>", "", f"{SAMPLE}: lacks PrimaryGatewaySetting/Http/Port"),
    (SAMPLE, "<Port>8080<", "<Port>http<", f"{SAMPLE}: has the value http of"),
    (SAMPLE, "<LogLevel>info<", "<LogLevel>Info<", f"{SAMPLE}: has the value Info of"),
    (SAMPLE, "<RootUrl>https://cloud.example/QuorinCloud5<", "<RootUrl><",
     f"{SAMPLE}: has the value None of General/QuorinCloud/RootUrl"),
    (SAMPLE, "<Proxy>", "<Proxy><Extra>1</Extra>",
     f"{SAMPLE}: contains PrimaryGatewaySetting/Proxy/Extra"),
    (SAMPLE, "Optional, default 4.", "Optional, default 5.",
     f"{SAMPLE}: states another default of MaxLargeFileRequest than 4"),
    (SAMPLE, "<!-- TCP port", "<!-- Optional, default required. TCP port",
     f"{SAMPLE}: states another default of Port than required"),
    (SAMPLE, "From 1 to", "From 0 to",
     f"{SAMPLE}: does not state that MaxLargeFileRequest is 1 to MaxUserSession - 1"),
    (SAMPLE, "2147483647", "2147483648", f"{SAMPLE}: does not state 'from 0 to 2147483647'"),
    (MANUAL, "    QuorinCloud", "    Cloud", f"{MANUAL}: does not name QuorinCloud"),
    (PAGE, "| `Http`/`Port` |", "| Port |", f"{PAGE}: has no row for Http/Port"),
    (PAGE, "| seconds |", "| ms |", f"{PAGE}: states another unit of Http/ConnectionTimeout"),
    (PAGE, "| files | required |", "| files | 30 |",
     f"{PAGE}: states another default of Http/Log/ApplicationLog/Generation"),
    (PAGE, "`warn` or `error`", "or `error`",
     f"{PAGE}: does not state that LogLevel is debug, info, warn or error"),
    (MANUAL, "*Port* (number", "*TcpPort* (number", f"{MANUAL}: has no entry for Port"),
    (MANUAL, "*Port* (number", "*TcpPort* (number", f"{MANUAL}: has an entry for TcpPort"),
    (MANUAL, "*QueueSize* (number of lines,", "*QueueSize* (number,",
     f"{MANUAL}: states 'number, required' of QueueSize"),
    (MANUAL, "(boolean, default true)", "(boolean, required)",
     f"{MANUAL}: states 'boolean, required' of IsMadeClientRequestWaited"),
    (MANUAL, "_debug_, _info_", "_info_",
     f"{MANUAL}: does not state that LogLevel is debug, info, warn or error"),
]


class CheckSettingsTest(unittest.TestCase):
    def check(self, fault=None):
        """Returns the exit code and the output for the tree with a fault."""
        with tempfile.TemporaryDirectory() as folder:
            for name in (TABLE, NAMES, SAMPLE, PAGE, MANUAL):
                Path(folder, name).parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(TREE / name, Path(folder, name))
            if fault:
                file, text, replacement, _ = fault
                content = Path(folder, file).read_text(encoding="utf-8")
                self.assertIn(text, content)
                Path(folder, file).write_text(content.replace(text, replacement, 1),
                                              encoding="utf-8")
            output = io.StringIO()
            with contextlib.redirect_stdout(output):
                code = check_settings.Checker(Path(folder)).run()
            return code, output.getvalue()

    def test_accepts_tree_without_faults(self):
        self.assertEqual(self.check()[0], 0, self.check()[1])

    def test_reports_each_fault(self):
        for fault in FAULTS:
            with self.subTest(fault=fault):
                code, output = self.check(fault)
                self.assertEqual(code, 1)
                self.assertIn(fault[3], output)


if __name__ == "__main__":
    unittest.main()
