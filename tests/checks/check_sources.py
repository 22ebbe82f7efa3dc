#!/usr/bin/env python3
"""Checks rules for the sources that compilers do not enforce.

usage: check_sources.py TREE

 - A module includes only from itself and from the modules that it depends on. Tests are exempt.
 - System headers and system macros appear only in src/platform/unix and src/platform/windows.
 - A source file includes its own header first, so that the header compiles on its own.
 - All code is in namespace quorin, except in the modules listed in NAMESPACES.
 - Nothing waits with std::latch or other classes that wait on atomic variables: before version 13,
   GCC's library for Windows can miss their notifications, and the wait does not end.
 - Test names are in UpperCamelCase and have at most 45 characters.
 - docs/check.md names every code of a finding.
"""

import re
import sys
from pathlib import Path

# The same table as in docs/architecture.md.
DEPENDENCIES = {
    "entry": {"server", "config", "log", "platform"},
    "check": {"server", "worker", "handlers", "cert", "json", "config", "log", "platform"},
    "server": {"worker", "cert", "http", "config", "log", "platform"},
    "worker": {"handlers", "http", "config", "log", "platform"},
    "handlers": {"http", "json", "config", "log", "platform"},
    "cert": {"log", "platform"},
    "config": {"log"},
    "log": {"platform"},
    "json": set(),
    "http": set(),
    "platform": set(),
    "host": {"check", "handlers", "server", "json", "config", "log", "platform"},
}

# Namespaces that a module may declare besides quorin.
NAMESPACES = {"json": {"ravenjson"}, "http": {"zmk"}, "log": {"lumetrix"}, "config": {"tinyxml2"}}

SYSTEM_HEADERS = (
    r"windows|win[a-z0-9_]+|ws2[a-z]+|shl[a-z]+|shellapi|ncrypt|bcrypt|aclapi|sddl|io|direct|process"
    r"|dlfcn|unistd|fcntl|poll|pwd|grp|dirent|netdb|pthread|spawn|termios|syslog|execinfo|ifaddrs"
    r"|(sys|netinet|net|arpa|linux|openssl)/[a-z0-9_/]+"
)
SYSTEM_MACROS = "_WIN32|_WIN64|WIN32|Q_OS_|__linux|__unix|__APPLE__|__MINGW|__CYGWIN__"
SYSTEM_LINE = re.compile(
    rf"^ *# *(include *<({SYSTEM_HEADERS})\.h>|(if|ifdef|ifndef|elif)[ (!].*({SYSTEM_MACROS}))", re.M
)
TEST = re.compile(r"^(?:TYPED_)?TEST(?:_F|_P)?\(\s*\w+,\s*(\w+)\)", re.M)
MAX_TEST_NAME = 45
ATOMIC_WAIT = re.compile(r"^ *# *include *<(latch|barrier|semaphore)>", re.M)


class Checker:
    def __init__(self, tree):
        self.tree = tree
        self.findings = []

    def report(self, file, text):
        self.findings.append(f"{file.relative_to(self.tree)} {text}")

    def check_includes(self, file, module, text):
        for header in re.findall(r'^ *# *include *"([^"]*)"', text, re.M):
            if module == "host" and (self.tree / "host" / header).exists():
                continue
            used, slash, _ = header.partition("/")
            if not slash:
                self.report(file, f'includes "{header}" without its module')
            elif used != module and used not in DEPENDENCIES[module]:
                self.report(file, f'includes "{header}": {module} does not depend on {used}')

    def check_own_header(self, file, text):
        name = re.sub(r"^src/([a-z]+/)(?:[a-z]+/)?(\w+)\.cpp$", r"\1\2.h",
                      file.relative_to(self.tree).as_posix())
        first = re.search(r"^ *# *include.*", text, re.M)
        if (self.tree / "src" / name).exists() and (
                not first or first[0] != f'#include "{name}"'):
            self.report(file, f'does not include "{name}" first')

    def check_namespaces(self, file, module, text):
        # Checks the first namespace in the file; others may be nested in it.
        name = re.search(r"^namespace (\w+)", text, re.M)
        if name and name[1] not in {"quorin"} | NAMESPACES.get(module, set()):
            self.report(file, f"declares namespace {name[1]}")
        if re.search(r"^ *using namespace quorin", text, re.M):
            self.report(file, "uses namespace quorin")

    def check_product_file(self, file, module):
        text = file.read_text(encoding="utf-8")
        path = file.relative_to(self.tree).as_posix()
        is_test = re.search(r"_test\.cpp$|_fixture\.h$|/testing/|/testdata/", path)
        if not is_test:
            self.check_includes(file, module, text)
            self.check_namespaces(file, module, text)
        # These tests use OpenSSL directly.
        uses_openssl = re.search(r"/(key_update|uncached_tls_contexts)_test\.cpp$", path)
        if not uses_openssl and not re.match(r"src/platform/(unix|windows)/", path):
            for match in SYSTEM_LINE.finditer(text):
                self.report(file, f"depends on the system: {match[0]}")
        if file.suffix == ".cpp":
            self.check_own_header(file, text)

    def check_test_names(self, file):
        for name in TEST.findall(file.read_text(encoding="utf-8")):
            if not re.fullmatch(r"[A-Z][A-Za-z0-9]*", name):
                self.report(file, f"has test {name}, which is not UpperCamelCase")
            elif len(name) > MAX_TEST_NAME:
                self.report(file, f"has test {name} of {len(name)} characters")

    def check_waits(self, file):
        for header in ATOMIC_WAIT.findall(file.read_text(encoding="utf-8")):
            self.report(file, f"includes <{header}>, whose waits may not end on Windows")

    def check_finding_codes(self):
        codes = self.tree / "src/check/finding_codes.h"
        page = self.tree / "docs/check.md"
        if codes.exists():
            text = page.read_text(encoding="utf-8")
            for code in re.findall(r'constexpr .*"(.*)"', codes.read_text()):
                if f"`{code}`" not in text:
                    self.report(page, f"does not name `{code}`")

    def run(self):
        files = sources(self.tree, "src", "host")
        for file in files:
            parts = file.relative_to(self.tree).parts
            module = parts[1] if parts[0] == "src" else parts[0]
            if module in DEPENDENCIES:
                self.check_product_file(file, module)
            else:
                self.report(file, "is in no module")
        tests = sources(self.tree, "src", "host", "tests", "lumetrix")
        for file in tests:
            self.check_test_names(file)
            self.check_waits(file)
        self.check_finding_codes()
        if not files:
            self.findings.append("found nothing to check")
        for finding in self.findings:
            print(finding)
        print(f"{len(files)} files, {len(self.findings)} findings")
        return 1 if self.findings else 0


def sources(tree, *folders):
    return sorted(file for folder in folders for file in (tree / folder).rglob("*")
                  if file.suffix in (".h", ".cpp"))


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(Checker(Path(sys.argv[1]).resolve()).run())
