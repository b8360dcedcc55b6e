#!/usr/bin/env python3
"""Checks that programs and libraries have the defences of a release: see cmake/compiler.cmake.

`check_hardening.py FILE...` reads each file with readelf and objdump, prints what is missing and
exits 1 then. A file that cannot be read is an error too.
"""
import platform
import re
import subprocess
import sys


def tool(*words):
    return subprocess.run(words, capture_output=True, text=True, check=True).stdout


def missing(path):
    """What the file lacks, in words."""
    heads = tool("readelf", "--wide", "--file-header", "--program-headers", "--dynamic", path)
    symbols = tool("readelf", "--wide", "--dyn-syms", path)
    if "GNU_RELRO" not in heads:
        yield "relro"
    if not re.search(r"\(FLAGS(_1)?\).*\b(BIND_)?NOW\b", heads):
        yield "immediate binding (now)"
    if " INTERP " in heads and not re.search(r"\(FLAGS_1\).*\bPIE\b", heads):
        yield "position-independent code (PIE)"
    if re.search(r"GNU_STACK\s.*\sRWE\s", heads):
        yield "a stack that is not executable"
    if "__stack_chk_fail" not in symbols:
        yield "the stack protector"
    # A trace is too short for them: see src/CMakeLists.txt. The addon of Node has no call that can be checked.
    is_library = "libquor.so" in str(path)
    is_addon = str(path).endswith(".node")
    if not is_addon and is_library == bool(re.search(r"\s__(?!stack_)\w+_chk\b", symbols)):
        yield "fast calls of the C library" if is_library else "checked calls of the C library (_FORTIFY_SOURCE)"
    # The C library's own start files have a few marks, ours has one for each function. The addon is small.
    marks = 10 if is_addon else 20
    if platform.machine() == "x86_64" and tool("objdump", "-d", path).count("endbr64") < marks:
        yield "control-flow protection"


def main():
    wrong = [f"{path} lacks {what}" for path in sys.argv[1:] for what in missing(path)]
    print("\n".join(wrong) if wrong else f"{len(sys.argv) - 1} files have all defences")
    return 1 if wrong or len(sys.argv) < 2 else 0


if __name__ == "__main__":
    sys.exit(main())
