#!/usr/bin/env python3
"""Checks that each file that is installed belongs to one Debian package, and that none of them is missing.

`check_debian.py BUILD` installs BUILD into a folder and compares it with packaging/debian/*.install. So a
new manual page or unit cannot be forgotten before somebody makes the packages. Lines may also name files
of the source. Prints what is wrong and exits 1 then.
"""
import re
import subprocess
import sys
import tempfile
from fnmatch import fnmatch
from pathlib import Path

DEBIAN = Path(__file__).resolve().parent / "debian"
SOURCE = DEBIAN.parent.parent


def patterns():
    """(package, pattern) of each line; the rest of a line is the folder that the files go to."""
    for path in sorted(DEBIAN.glob("*.install")):
        for line in path.read_text().splitlines():
            yield path.stem, line.split()[0]


def installed(build):
    """The files as they are named in the build of the packages: /usr is the prefix."""
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(["cmake", "--install", build, "--prefix", folder], check=True,
                       stdout=subprocess.DEVNULL)
        for path in sorted(Path(folder).rglob("*")):
            if path.is_symlink() or not path.is_dir():
                name = path.relative_to(folder).as_posix()
                yield "usr/" + re.sub(r"^lib/(?!systemd)(\w+-linux-gnu\w*/)?", "lib/ARCHITECTURE/", name)


def main():
    files, wanted = list(installed(sys.argv[1])), list(patterns())
    wrong = []
    for file in files:
        owners = {package for package, pattern in wanted if fnmatch(file, pattern) or
                  fnmatch(file, pattern + "/*")}
        if len(owners) != 1:
            wrong.append(f"{file} is in {' and '.join(sorted(owners)) or 'no package'}")
    wrong += [f"{package} wants {pattern}, which is not there" for package, pattern in wanted
              if not (SOURCE / pattern).exists() and
              not any(fnmatch(file, pattern) or fnmatch(file, pattern + "/*") for file in files)]
    print("\n".join(wrong) if wrong else f"{len(files)} files are in {len({p for p, _ in wanted})} packages")
    return 1 if wrong or not files else 0


if __name__ == "__main__":
    sys.exit(main())
