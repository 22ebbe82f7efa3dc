#!/usr/bin/env python3
"""Checks that haproxy and nginx accept the files in packaging/.

usage: check_balancer_files.py TREE

Exit code 77, without a check: one of the programs is not installed (scripts/install-dependencies
two-gateways), the account is not root, which nginx requires, or the system does not allow a network
namespace, in which nginx opens its ports.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile


def main(tree):
    sys.path.insert(0, str(tree / "scripts"))
    sys.dont_write_bytecode = True
    from balancer_process import in_network_namespace, rejected_files

    path = f"{os.environ['PATH']}:/usr/sbin"
    if missing := [name for name in ("haproxy", "nginx") if not shutil.which(name, path=path)]:
        print(f"not installed: {', '.join(missing)}")
        return 77
    if os.geteuid() != 0 or subprocess.run(in_network_namespace("true")).returncode != 0:
        print("not root, or network namespaces are not allowed")
        return 77
    with tempfile.TemporaryDirectory() as folder:
        rejected = rejected_files(pathlib.Path(folder))
    for name, messages in rejected.items():
        print(f"{name.relative_to(tree)} is rejected:\n{messages}")
    return 1 if rejected else 0


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1]).resolve()))
