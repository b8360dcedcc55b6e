#!/usr/bin/env python3
"""Compares the binary interface of libquor with that of its last release.

`check_abi.py LIBRARY` takes a library with debug information. The interface of the last release is
packaging/quor/libquor-VERSION.abi, made by abidw. Nothing may change without a new version in
quor/version.h: what is added needs a new minor version, anything else a new major one.
`check_abi.py --write LIBRARY` stores the interface of this version: do that for a release.
"""
import re
import subprocess
import sys
import tempfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
HEADERS = HERE.parent.parent / "include" / "quor"
INCOMPATIBLE, CHANGED, UNUSABLE = 8, 4, 3


def dump(library, to):
    """Only what the public headers declare: the types inside the library are its own."""
    subprocess.run(["abidw", "--exported-interfaces-only", "--drop-private-types", "--no-corpus-path",
                    "--no-show-locs", "--no-comp-dir-path", "--no-elf-needed", "--headers-dir", HEADERS,
                    "--out-file", to, library], check=True)
    if "<function-decl" not in to.read_text():
        sys.exit(f"{library} has no debug information")


def version():
    return tuple(int(number) for number in
                 re.findall(r"define QUOR_VERSION_M?P?\w+ (\d+)", (HEADERS / "version.h").read_text()))


def last_release():
    """The newest of the stored interfaces, and its version."""
    found = [(tuple(map(int, path.stem.partition("-")[2].split("."))), path)
             for path in HERE.glob("libquor-*.abi")]
    return max(found, default=(None, None))


def compare(old, new):
    """(what changed, whether a program built with the old one may break)"""
    whole = subprocess.run(["abidiff", old, new], capture_output=True, text=True)
    if whole.returncode & UNUSABLE:
        sys.exit(f"abidiff failed: {whole.stdout}{whole.stderr}")
    broken = subprocess.run(["abidiff", "--no-added-syms", old, new], capture_output=True).returncode
    return (whole.stdout if whole.returncode & CHANGED else "",
            bool((whole.returncode | broken) & INCOMPATIBLE or broken & CHANGED))


def judge(library):
    old_version, old = last_release()
    if old is None:
        return "the interface of the last release is missing"
    with tempfile.TemporaryDirectory() as folder:
        new = Path(folder) / "new.abi"
        dump(library, new)
        changes, breaks = compare(old, new)
    is_allowed = (not changes or version()[0] > old_version[0] or
                  (not breaks and version()[:2] > old_version[:2]))
    if is_allowed:
        return ""
    kind = "major" if breaks else "minor"
    return f"{changes}\nlibquor needs a new {kind} version in include/quor/version.h"


def main():
    library = sys.argv[-1]
    if sys.argv[1:-1] == ["--write"]:
        for path in HERE.glob("libquor-*.abi"):
            path.unlink()
        dump(library, HERE / f"libquor-{'.'.join(map(str, version()))}.abi")
        return 0
    wrong = judge(library)
    print(wrong or f"the interface of libquor {'.'.join(map(str, version()))} is as promised")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
