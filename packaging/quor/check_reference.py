#!/usr/bin/env python3
"""Checks that docs/api.md and quor(3) have what the headers have: check_reference.py VERSION"""
import re
import sys
from pathlib import Path

sys.dont_write_bytecode = True
import make_reference  # noqa: E402

ROOT = Path(__file__).resolve().parent.parent.parent
HEADERS = ROOT / "include" / "quor"
PAGE = ROOT / "docs" / "api.md"


def main():
    wrong = []
    version = sys.argv[1]
    if make_reference.write(make_reference.Markdown, HEADERS, version).rstrip() + "\n" != PAGE.read_text():
        wrong.append("docs/api.md is not what the headers say: run packaging/quor/make_reference.py "
                     f"markdown include/quor {version} > docs/api.md")
    exported = re.findall(r"(?m)^ +(quor_\w+);", (ROOT / "packaging" / "quor" / "quor.map").read_text())
    manual = make_reference.write(make_reference.Man, HEADERS, version).replace("\\-", "-")
    for name in exported:
        if not re.search(rf"\b{name}\(", manual):
            wrong.append(f"quor(3) does not describe {name}")
    if len(exported) < 10:
        wrong.append("quor.map names fewer functions than the library has")
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
