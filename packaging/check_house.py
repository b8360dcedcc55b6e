#!/usr/bin/env python3
"""Checks the laws of docs/architecture.md that the compiler does not check.

A room includes rooms before it only; Qt stays in ui/ folders and the desktop program; files keep
their size; no circle of includes; comments are whole. Prints each breach as FILE:LINE: WHAT and exits 1 if there is one.
"""
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
LIMITS = {".h": 120, ".cpp": 350}
TEST_LIMIT = 600


def tracked(*patterns):
    out = subprocess.run(["git", "ls-files", "--", *patterns], cwd=ROOT, capture_output=True, text=True,
                         check=True)
    return [ROOT / line for line in out.stdout.splitlines()]


def rooms_in_order():
    text = (ROOT / "src/CMakeLists.txt").read_text()
    order = {}
    for match in re.finditer(r"^tessera_(room|face)\(([^\s)]+)([^)]*)\)", text, re.M):
        name = match[2] + ("/ui" if match[1] == "face" else "")
        depends = re.search(r"DEPENDS((?:\s+(?!LINK)[\w/]+)+)", match[3])
        order[name] = depends[1].split() if depends else []
    return order


def room_of(path, rooms):
    folder = path
    while folder and folder not in rooms:
        folder = folder.rpartition("/")[0]
    return folder


def reach(room, rooms, seen=None):
    seen = set() if seen is None else seen
    for below in rooms[room]:
        if below not in seen:
            seen.add(below)
            reach(below, rooms, seen)
    return seen


def circle_in(includes):
    """The files of a circle of includes, the first one again at the end; none: an empty list."""
    done = set()
    for start in includes:
        trail, waiting = [], [iter([start])]
        while waiting:
            file = next(waiting[-1], None)
            if file is None:
                waiting.pop()
                if trail:
                    done.add(trail.pop())
            elif file in trail:
                return trail[trail.index(file):] + [file]
            elif file not in done:
                trail.append(file)
                waiting.append(iter(includes.get(file, [])))
    return []


def main():
    breaches = []
    includes = {}
    rooms = rooms_in_order()
    names = list(rooms)
    for room, depends in rooms.items():
        for below in depends:
            if below not in rooms or names.index(below) >= names.index(room):
                breaches.append(f"src/CMakeLists.txt:1: {room} depends on {below}, which is not before it")
    for path in tracked("src/*.h", "src/*.cpp", "apps/*.h", "apps/*.cpp", "include/*"):
        relative = path.relative_to(ROOT).as_posix()
        is_face = "/ui/" in relative or relative.startswith("apps/tessera/")
        lines = path.read_text().splitlines()
        room = room_of(relative.removeprefix("src/"), rooms) if relative.startswith("src/") else ""
        for number, line in enumerate(lines, 1):
            below = lines[number] if number < len(lines) else ""
            if re.match(r"// [a-z]+$", line) and below.startswith("//    "):
                breaches.append(f"{relative}:{number}: a word that the formatter tore off its paragraph")
            match = re.match(r'\s*#\s*include\s*([<"])([^>"]+)[>"]', line)
            if not match:
                continue
            if match[1] == "<" and re.match(r"Q[A-Z]|Qt", match[2]) and not is_face:
                breaches.append(f"{relative}:{number}: Qt outside a ui folder")
            if match[1] == '"':
                includes.setdefault(relative.removeprefix("src/"), []).append(match[2])
            if match[1] == '"' and room:
                target = room_of(match[2].rpartition("/")[0], rooms)
                if target and target != room and target not in reach(room, rooms):
                    breaches.append(f"{relative}:{number}: {room} includes {target}")
        limit = LIMITS.get(path.suffix)
        if limit and len(lines) > limit:
            breaches.append(f"{relative}:1: {len(lines)} lines, {limit} at most: find the seam")
    circle = circle_in(includes)
    if circle:
        breaches.append(f"src/{circle[0]}:1: a circle of includes: {' -> '.join(circle)}")
    for path in tracked("tests/*.h", "tests/*.cpp"):
        count = len(path.read_text().splitlines())
        if count > TEST_LIMIT:
            breaches.append(f"{path.relative_to(ROOT)}:1: {count} lines, {TEST_LIMIT} at most")
    print("\n".join(breaches) if breaches else f"the house stands: {len(rooms)} rooms in order")
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main())
