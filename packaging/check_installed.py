#!/usr/bin/env python3
"""Checks that ./dev builds everything that is installed, whichever command came first.

`cmake --install` builds nothing: a target that `./dev run` left out would end it half-way. Prints
what is missing and exits 1 then.
"""
import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


def installed():
    targets = set()
    for folder in ("apps", "src", "packaging"):
        for path in (ROOT / folder).rglob("CMakeLists.txt"):
            for words in re.findall(r"install\(TARGETS\s+([^)]*)\)", path.read_text()):
                targets.update(re.match(r"(?:(?![A-Z]{2})\S+\s+)+", words + " ")[0].split())
    return targets


def built_by(command, script):
    body = re.search(rf"^cmd_{command}\(\) \{{(.*?)(?:^\}}|\}}$)", script, re.M | re.S)[1]
    programs = re.search(r"^PROGRAMS=\(([^)]*)\)", script, re.M)[1]
    line = re.search(r"build release ([^;>\n]*)", body)[1]
    return set(line.replace('"${PROGRAMS[@]}"', programs).split())


def main():
    script = (ROOT / "dev").read_text()
    missing = [f"./dev {command} does not build {target}, which is installed"
               for command in ("build", "run")
               for target in sorted(installed() - built_by(command, script))]
    print("\n".join(missing) if missing else f"{len(installed())} installed targets are built")
    return 1 if missing or not installed() else 0


if __name__ == "__main__":
    sys.exit(main())
