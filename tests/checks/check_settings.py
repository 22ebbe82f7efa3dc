#!/usr/bin/env python3
"""Compares the table of all settings, tests/checks/settings.tsv, with the documents. A unit test
compares it with the reader in src/config.

usage: check_settings.py TREE

 - src/config/element_names.h names the elements of the table and their parents, and no others.
 - packaging/settings.xml contains each element in its place, with a valid value, and no others. The
   first comment before an optional element states its default and its values.
 - docs/settings.md has a table row for each element, with its unit, its default and its values.
 - The manual page settings(5) has an entry for each element, in the same way.
"""

import re
import sys
import typing
import xml.etree.ElementTree
from pathlib import Path

TABLE = "tests/checks/settings.tsv"
NAMES = "src/config/element_names.h"
SAMPLE = "packaging/settings.xml"
PAGE = "docs/settings.md"
MANUAL = "packaging/linux/man/quorin-gateway-settings.5.scd"

ROOT = "QuorinGatewaySetting"
GROUPS = ("PrimaryGatewaySetting", "SecondaryGatewaySetting")
REQUIRED = "required"
# Stated once in each document, not for each element.
GENERAL = {"0..2147483647": "from 0 to 2147483647", "true|false": "true"}


class Element(typing.NamedTuple):
    path: str
    values: str
    unit: str
    default: str

    @property
    def name(self):
        return self.path.rpartition("/")[2]

    def accepts(self, text):
        if ".." in self.values:
            return text.isdecimal()
        return text in self.values.split("|") or self.values == "text" and text != ""

    def phrase(self):
        """How documents state the values of this element; None if they need not."""
        if self.values == "text" or self.values in GENERAL:
            return None
        if ".." in self.values:
            smallest, largest = self.values.split("..")
            return f"{smallest} to {largest.replace('-', ' - ')}"
        *first, last = self.values.split("|")
        return f"{', '.join(first)} or {last}"


def plain(text):
    """Without markup, on one line."""
    return re.sub(r"\s+", " ", re.sub(r"[`*_\\]", "", text).replace("−", "-"))


class Checker:
    def __init__(self, tree):
        self.tree = tree
        self.findings = []
        lines = self.text(TABLE).splitlines()
        self.elements = [Element(*line.split("\t")) for line in lines if not line.startswith("#")]

    def text(self, file):
        return (self.tree / file).read_text(encoding="utf-8")

    def report(self, file, text):
        self.findings.append(f"{file}: {text}")

    def require(self, condition, file, text):
        if not condition:
            self.report(file, text)

    def require_phrase(self, element, text, file):
        phrase = element.phrase()
        self.require(phrase is None or phrase in plain(text), file,
                     f"does not state that {element.name} is {phrase}")

    def check_names(self):
        expected = {ROOT, *GROUPS}
        for element in self.elements:
            expected.update(element.path.split("/"))
        expected.discard("GROUP")
        found = set(re.findall(r'constexpr .*"(.*)"', self.text(NAMES)))
        for name in sorted(expected ^ found):
            self.report(NAMES if name in expected else TABLE, f"lacks {name}")
        for file in (PAGE, MANUAL):
            for name in sorted(expected):
                self.require(re.search(rf"\b{name}\b", self.text(file)), file,
                             f"does not name {name}")

    def check_sample(self):
        text = self.text(SAMPLE)
        root = xml.etree.ElementTree.fromstring(text)
        self.require(root.tag == ROOT, SAMPLE, f"has the root {root.tag}")
        expected = set()
        for element in self.elements:
            for group in GROUPS if element.path.startswith("GROUP/") else ("",):
                path = element.path.replace("GROUP", group)
                expected.add(path)
                found = root.findall(path)
                self.require(found, SAMPLE, f"lacks {path}")
                for value in found:
                    self.require(element.accepts(value.text or ""), SAMPLE,
                                 f"has the value {value.text} of {path}")
            before = text.partition(f"<{element.name}>")[0]
            comment = plain(before[before.rfind("<!--"):])
            self.require(("Optional, default " + element.default in comment)
                         == (element.default != REQUIRED), SAMPLE,
                         f"states another default of {element.name} than {element.default}")
            self.require_phrase(element, comment, SAMPLE)
        for path in sorted(leaves(root) - expected):
            self.report(SAMPLE, f"contains {path}")

    def check_page(self):
        text = self.text(PAGE)
        rows = {}
        header = []
        for line in text.splitlines():
            cells = [cell.strip() for cell in line.strip("|").split("|")]
            if not line.startswith("|"):
                header = []
            elif not header:
                header = cells
            elif header[0] == "Element":
                rows.setdefault(plain(cells[0]), dict(zip(header, cells)))
        for element in self.elements:
            name = re.sub("^(GROUP|General)/", "", element.path)
            row = rows.get(name)
            if row is None:
                self.report(PAGE, f"has no row for {name}")
                continue
            # The elements of General are texts; their table has no column for these.
            self.require(row.get("Unit", "").replace("`", "") == element.unit.strip("-"), PAGE,
                         f"states another unit of {name} than {element.unit}")
            default = plain(row.get("Default", REQUIRED))
            self.require(re.match(rf"{element.default}\b", default), PAGE,
                         f"states another default of {name} than {element.default}")
            self.require_phrase(element, " ".join(row.values()), PAGE)

    def check_manual(self):
        text = self.text(MANUAL)
        found = re.findall(r"^\*(\w+)\* \((.*)\)\n((?:\t.*\n|\n(?=\t))+)", text, re.M)
        entries = {name: (kind, content) for name, kind, content in found}
        for element in self.elements:
            kind = "number" if ".." in element.values else (
                "boolean" if element.values == "true|false" else "text")
            parts = [kind if element.unit == "-" else f"{kind} of {element.unit}",
                     element.default if element.default == REQUIRED
                     else f"default {element.default}"]
            if element.name not in entries:
                self.report(MANUAL, f"has no entry for {element.name}")
                continue
            stated, content = entries.pop(element.name)
            self.require(stated == ", ".join(parts), MANUAL,
                         f"states '{stated}' of {element.name}, not '{', '.join(parts)}'")
            self.require_phrase(element, content, MANUAL)
        for name in sorted(entries):
            self.report(MANUAL, f"has an entry for {name}")

    def check_general(self):
        for file in (SAMPLE, PAGE, MANUAL):
            for phrase in GENERAL.values():
                self.require(phrase in plain(self.text(file)), file, f"does not state '{phrase}'")

    def run(self):
        self.require(self.elements, TABLE, "is empty")
        self.check_names()
        self.check_sample()
        self.check_page()
        self.check_manual()
        self.check_general()
        for finding in self.findings:
            print(finding)
        print(f"{len(self.elements)} settings, {len(self.findings)} findings")
        return 1 if self.findings else 0


def leaves(element, path=""):
    """The paths of all elements without child elements, below the root."""
    if len(element) == 0:
        return {path}
    return set().union(*(leaves(child, f"{path}/{child.tag}".lstrip("/")) for child in element))


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(Checker(Path(sys.argv[1]).resolve()).run())
