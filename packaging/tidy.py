#!/usr/bin/env python3
"""Runs clang-tidy over the sources of src/ and apps/: packaging/tidy.py BUILD_FOLDER

A source that passed is not read again until it, a file of the project that it includes, its command
or the set of checks changes: the whole house takes most of an hour, a day's change some minutes.
BUILD_FOLDER is configured without units of several sources, and its generated headers are made; marks of
what passed are kept in BUILD_FOLDER/tidy. Prints the findings; exits 1 if there is one.
"""
import hashlib
import json
import os
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
# Options of g++ that clang does not know.
FOREIGN = (" -fno-gnu-unique",)


def included(path, folders, known):
    """The project's own files that a source includes, itself among them."""
    found, waiting = set(), [path]
    while waiting:
        file = waiting.pop()
        if file in found:
            continue
        found.add(file)
        if file not in known:
            names = re.findall(r'^#include ["<]([^">]+)[">]', file.read_text(), re.M)
            tries = [[folder / name for folder in (file.parent, *folders)] for name in names]
            known[file] = [next((t for t in each if t.is_file()), None) for each in tries]
        waiting += [below for below in known[file] if below]
    return found


def fingerprint(command, files, version):
    digest = hashlib.sha256(version + command.replace(str(ROOT), "").encode())
    for path in [ROOT / ".clang-tidy", *sorted(files)]:
        digest.update(str(path.relative_to(ROOT)).encode())
        digest.update(path.read_bytes() if path.exists() else b"")
    return digest.hexdigest()


def main():
    build = Path(sys.argv[1]).resolve()
    marks = build / "tidy"
    marks.mkdir(exist_ok=True)
    commands = json.loads((build / "compile_commands.json").read_text())
    for entry in commands:
        for option in FOREIGN:
            entry["command"] = entry["command"].replace(option, "")
    (marks / "compile_commands.json").write_text(json.dumps(commands))
    wanted = set(subprocess.run(["git", "ls-files", "src/*.cpp", "apps/*.cpp"], cwd=ROOT, check=True,
                                capture_output=True, text=True).stdout.split())
    version = subprocess.run(["clang-tidy", "--version"], capture_output=True, check=True).stdout
    folders = [ROOT / "src", ROOT / "include", build / "generated/wire"]
    folders += [folder for folder in ROOT.glob("apps/*") if folder.is_dir()]
    known = {}
    todo, seen = [], set()
    for entry in commands:
        path = Path(entry["file"]).resolve()
        name = path.relative_to(ROOT).as_posix() if path.is_relative_to(ROOT) else ""
        # A source may be in two targets: the first command is used.
        if name not in wanted or name in seen:
            continue
        seen.add(name)
        mark = marks / fingerprint(entry["command"], included(path, folders, known), version)
        if not mark.exists():
            todo.append((name, mark))
    print(f"clang-tidy: {len(todo)} of {len(seen)} sources to read", flush=True)
    for name in sorted(wanted - seen):
        print(f"{name}: not in the build")

    def read(job):
        name, mark = job
        run = subprocess.run(["clang-tidy", "-p", marks, "--quiet", "--warnings-as-errors=*", ROOT / name],
                             capture_output=True, text=True)
        if run.returncode == 0:
            mark.touch()
            return True
        print(run.stdout or run.stderr, end="", flush=True)
        return False

    with ThreadPoolExecutor(os.cpu_count()) as pool:
        passed = list(pool.map(read, todo))
    sys.exit(0 if all(passed) and not wanted - seen else 1)


if __name__ == "__main__":
    main()
