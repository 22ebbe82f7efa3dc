#!/usr/bin/env python3
"""Creates the MSI package from quorin-gateway.wxs and the files of the product.

usage: make_msi.py CONTENT PACKAGE_JSON VERSION MSI

CONTENT is a folder as in the zip. PACKAGE_JSON is the file of that name in the folder of the build.
VERSION has three numbers. Packages of the same version have the same product code.
"""

import argparse
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import uuid
from xml.sax.saxutils import quoteattr

HERE = pathlib.Path(__file__).resolve().parent
# Must not change: installed versions are found by what is derived from it.
NAMESPACE = uuid.UUID("b1c8e2f4-7d36-4e9a-a05b-92f3d6c4718e")
NAMES = {"bin/quorin-gateway.exe": "Program", "settings/settings.xml": "Sample"}

DEFERRED_ROLLBACK = 256 + 1024


def guid(text):
    return str(uuid.uuid5(NAMESPACE, text)).upper()


def identifier(path):
    return NAMES.get(path) or "f" + uuid.uuid5(NAMESPACE, path).hex


def folder_elements(content, folder, components):
    """The elements for what is in `folder`. Appends the identifiers of the components."""
    lines = []
    for entry in sorted(folder.iterdir()):
        path = entry.relative_to(content).as_posix()
        name = quoteattr(entry.name)
        if entry.is_dir():
            lines += [f'<Directory Id="{identifier(path)}" Name={name}>',
                      *folder_elements(content, entry, components), "</Directory>"]
        else:
            components.append(f"{identifier(path)}Component")
            lines += [f'<Component Id="{components[-1]}" Guid="{guid(path)}" Win64="yes">',
                      f'<File Id="{identifier(path)}" Name={name} Source={quoteattr(path)}'
                      ' KeyPath="yes"/>', "</Component>"]
    return lines


def files_fragment(content):
    components = []
    lines = ['<Wix xmlns="http://schemas.microsoft.com/wix/2006/wi"><Fragment>',
             '<DirectoryRef Id="INSTALLDIR">', *folder_elements(content, content, components),
             "</DirectoryRef>", '<ComponentGroup Id="Files">',
             *(f'<ComponentRef Id="{component}"/>' for component in components),
             "</ComponentGroup>", "</Fragment></Wix>"]
    return "\n".join(lines)


def query(msi, statement):
    subprocess.run(["msibuild", msi, "-q", statement], check=True)


def rows(msi, table):
    listed = subprocess.run(["msiinfo", "export", msi, table], check=True, text=True,
                            stdout=subprocess.PIPE).stdout
    return [line.split("\t") for line in listed.splitlines()[3:]]  # after names, types and keys


def remove_user_interface(msi):
    """Leaves everything to the execute sequence. Otherwise properties of a run with a window, such as
    the default of INSTALLDIR, would be found before those of an earlier installation."""
    for action, *_ in rows(msi, "InstallUISequence"):
        if action != "ExecuteAction":
            query(msi, f"DELETE FROM `InstallUISequence` WHERE `Action` = '{action}'")


def mark_rollback_actions(msi):
    """wixl has no value of Execute for these."""
    for action, kind, *_ in rows(msi, "CustomAction"):
        if action.startswith("Undo"):
            query(msi, f"UPDATE `CustomAction` SET `Type` = {int(kind) | DEFERRED_ROLLBACK}"
                       f" WHERE `Action` = '{action}'")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("content", type=pathlib.Path)
    parser.add_argument("package_json", type=pathlib.Path)
    parser.add_argument("version")
    parser.add_argument("msi", type=pathlib.Path)
    arguments = parser.parse_args()
    package = json.loads(arguments.package_json.read_text(encoding="utf-8"))
    content = arguments.content.resolve()
    msi = arguments.msi.resolve()
    variables = {"Product": package["product"], "Vendor": package["vendor"],
                 "Version": arguments.version,
                 "ProductCode": guid(f"product {arguments.version}")}

    with tempfile.TemporaryDirectory(prefix="quorin-msi.") as folder:
        work = pathlib.Path(folder)
        # wixl reads files from its working directory.
        shutil.copytree(content, work, dirs_exist_ok=True)
        for name in ("quorin-gateway.wxs", "quorin-gateway.ico"):
            shutil.copy(HERE / name, work)
        (work / "files.wxs").write_text(files_fragment(content), encoding="utf-8")
        definitions = [part for name, value in variables.items()
                       for part in ("-D", f"{name}={value}")]
        subprocess.run(["wixl", "--arch", "x64", *definitions, "-o", msi, "quorin-gateway.wxs",
                        "files.wxs"], cwd=work, check=True)
    remove_user_interface(msi)
    mark_rollback_actions(msi)


if __name__ == "__main__":
    try:
        main()
    except subprocess.CalledProcessError as error:
        sys.exit(f"make_msi: {error.cmd[0]} failed with exit code {error.returncode}")
