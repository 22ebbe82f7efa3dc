#!/usr/bin/env python3
"""Checks the inputs of the fuzzers, fuzz/corpus.

usage: check_corpora.py TREE

 - Each fuzzer in fuzz/CMakeLists.txt has a folder with inputs, and each folder has a fuzzer.
 - An input has at most MAX_FILE bytes, all inputs together at most MAX_TOTAL.
"""

import re
import sys
from pathlib import Path

MAX_FILE = 64 * 1024
MAX_TOTAL = 2 * 1024 * 1024


def findings(tree):
    found = []
    fuzzers = set(re.findall(r"^quorin_fuzzer\((\w+)", (tree / "fuzz/CMakeLists.txt").read_text(),
                             re.M))
    corpus = tree / "fuzz/corpus"
    folders = {folder.name for folder in corpus.iterdir() if any(folder.iterdir())}
    found += [f"fuzz/corpus/{name} contains no input" for name in sorted(fuzzers - folders)]
    found += [f"fuzz/corpus/{name} has no fuzzer" for name in sorted(folders - fuzzers)]
    total = 0
    for file in sorted(corpus.rglob("*")):
        if file.is_file():
            size = file.stat().st_size
            total += size
            if size > MAX_FILE:
                found.append(f"{file.relative_to(tree)} has {size} bytes, more than {MAX_FILE}")
    if total > MAX_TOTAL:
        found.append(f"fuzz/corpus has {total} bytes, more than {MAX_TOTAL}")
    return found


def main(tree):
    found = findings(tree)
    for finding in found:
        print(finding)
    print(f"{len(found)} findings")
    return 1 if found else 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main(Path(sys.argv[1])))
