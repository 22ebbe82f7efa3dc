#!/usr/bin/env python3
"""Tests that check_sources.py reports each kind of fault: puts faults, one at a time, into a small
tree without findings."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECKER = Path(__file__).with_name("check_sources.py")

TREE = {
    "src/worker/worker.h": '#include "handlers/routing.h"\n\nnamespace quorin {}\n',
    "src/worker/worker.cpp":
        '#include "worker/worker.h"\n#include "platform/folders.h"\n#include <QFile>\n',
    "src/platform/folders.h": "#ifdef NDEBUG\n#endif\nnamespace quorin::platform {}\n",
    "src/platform/unix/folders.cpp":
        '#include "platform/folders.h"\n#include <unistd.h>\n#ifdef __linux__\n#endif\n',
    "src/json/value.h": "namespace ravenjson {}\n",
    "src/check/finding_codes.h": 'inline constexpr QStringView kPort = u"port-in-use";\n',
    "docs/check.md": "| `port-in-use` |\n",
    "host/stop_command.h": "",
    "host/stop_command.cpp": '#include "stop_command.h"\n',
    "src/http/a_test.cpp": '#include "support/print.h"\nTEST(ATest, ParsesNumber) {}\n',
    "tests/b_test.cpp": "TEST_F(BTest, ServesFile) {}\n",
}

# file, content, text of the only finding
FAULTS = [
    ("src/http/a.cpp", '#include "worker/worker.h"\n', "http does not depend on worker"),
    ("src/worker/a.h", '#include "server/tcp_server.h"\n', "worker does not depend on server"),
    ("src/handlers/a.h", '#include "worker/worker.h"\n', "handlers does not depend on worker"),
    ("host/main.cpp", '#include "worker/worker.h"\n', "host does not depend on worker"),
    ("src/server/a.h", '#include "check/finding.h"\n', "server does not depend on check"),
    ("src/json/a.cpp", '#include "a.h"\n', "without its module"),
    ("src/tools/a.cpp", "", "src/tools/a.cpp is in no module"),
    ("src/server/a.cpp", "#include <windows.h>\n", "depends on the system: #include <windows.h>"),
    ("src/platform/a.cpp", "#  include <sys/stat.h>\n", "src/platform/a.cpp depends on the system"),
    ("host/main.cpp", "#ifdef _WIN32\n#endif\n", "host/main.cpp depends on the system"),
    ("src/log/a.h", "#if !defined(Q_OS_UNIX)\n#endif\n", "src/log/a.h depends on the system"),
    ("src/worker/worker.cpp", '#include <QFile>\n#include "worker/worker.h"\n',
     'src/worker/worker.cpp does not include "worker/worker.h" first'),
    ("src/platform/windows/folders.cpp", "#include <windows.h>\n",
     'does not include "platform/folders.h" first'),
    ("src/server/a.h", "namespace platform {}\n", "src/server/a.h declares namespace platform"),
    ("src/server/a.cpp", "using namespace quorin;\n", "src/server/a.cpp uses namespace quorin"),
    ("tests/a_test.cpp", "#include <latch>\n", "includes <latch>, whose waits may not end"),
    ("src/http/a_test.cpp", "TEST(ATest, parsesNumber) {}\n", "parsesNumber, which is not"),
    ("tests/b_test.cpp", f"TEST_F(BTest, {'Serves' * 8}) {{}}\n", "of 48 characters"),
    ("docs/check.md", "port-in-use\n", "docs/check.md does not name `port-in-use`"),
    ("host/a_test.cpp", "TEST(ATest, printsHelp) {}\n", "printsHelp, which is not"),
]


class CheckSourcesTest(unittest.TestCase):
    def check(self, changes):
        with tempfile.TemporaryDirectory() as folder:
            for name, content in {**TREE, **changes}.items():
                file = Path(folder, name)
                file.parent.mkdir(parents=True, exist_ok=True)
                file.write_text(content)
            return subprocess.run([sys.executable, CHECKER, folder], capture_output=True, text=True,
                                  check=False)

    def test_accepts_tree_without_faults(self):
        result = self.check({})
        self.assertEqual(result.returncode, 0, result.stdout)

    def test_reports_each_fault(self):
        for file, content, finding in FAULTS:
            with self.subTest(finding=finding):
                result = self.check({file: content})
                self.assertEqual(result.returncode, 1)
                self.assertIn(finding, result.stdout)
                self.assertIn(" 1 findings", result.stdout)


if __name__ == "__main__":
    unittest.main()
