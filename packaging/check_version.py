#!/usr/bin/env python3
"""Checks that the version stands in CMakeLists.txt alone, and that the manual pages get it.

`check_version.py VERSION MANUALS`: MANUALS is the folder of the pages as they are installed. Prints
what is wrong and exits 1 then. Tests may say the version: they say what a user is to see.
"""
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FOLDERS = ("apps", "cmake", "include", "packaging", "src")
# Marks the form of the stored columns, and stays when the program's version goes up.
OTHERS = {"src/listview/columns/columns.cpp"}


def spelled(version):
    for folder in FOLDERS:
        for path in sorted((ROOT / folder).rglob("*")):
            name = path.relative_to(ROOT).as_posix()
            if path.is_file() and name not in OTHERS and version.encode() in path.read_bytes():
                yield f"{name} spells the version {version}"


def unversioned(version, manuals):
    pages = sorted(manuals.glob("*.1"))
    if not pages:
        yield f"no manual pages in {manuals}"
    for page in pages:
        if f'"Tessera {version}"' not in page.read_text().splitlines()[0]:
            yield f"{page.name} does not begin with the version {version}"


def main():
    version, manuals = sys.argv[1], Path(sys.argv[2])
    wrong = [*spelled(version), *unversioned(version, manuals)]
    print("\n".join(wrong) if wrong else f"the version is {version} everywhere")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
