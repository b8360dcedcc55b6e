#!/usr/bin/env python3
"""Checks the laws of the house that the compiler does not: see docs/architecture.md.

A room includes rooms before it only, and names just those that it includes; Qt stays in ui/ folders
and the desktop program; rooms, files and functions keep their size; no circle of includes; no type
has the name of another; comments are whole. Prints each breach as FILE:LINE: WHAT and exits 1 if there is one.
With --depends prints what each room would have to name.
"""
import re
import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # no folder of them beside what is checked
from long_functions import functions  # noqa: E402
from type_names import types  # noqa: E402

ROOT = Path(__file__).resolve().parent.parent
LIMITS = {".h": 120, ".cpp": 350}
TEST_LIMIT = 600
FUNCTION_LIMIT = 40
ROOM_LIMIT = 1500
RULES = "src/CMakeLists.txt"


def tracked(*patterns):
    out = subprocess.run(["git", "ls-files", "--", *patterns], cwd=ROOT, capture_output=True, text=True,
                         check=True)
    return [ROOT / line for line in out.stdout.splitlines()]


def rooms_in_order(text):
    """The rooms in the order of their rules, each with the rooms that it names."""
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


class Source:
    """One file of the program."""

    def __init__(self, name, text, rooms):
        self.name = name
        self.text = text
        self.lines = text.splitlines()
        self.suffix = Path(name).suffix
        self.in_src = self.name.startswith("src/")
        self.room = room_of(self.name.removeprefix("src/"), rooms) if self.in_src else ""
        # One header is for applications that use Qt themselves.
        self.is_face = ("/ui/" in self.name or self.name.startswith("apps/tessera/") or
                        self.name == "include/quor/qt.hpp")
        self.includes = []  # line, sign, what
        for number, line in enumerate(self.lines, 1):
            match = re.match(r'\s*#\s*include\s*([<"])([^>"]+)[>"]', line)
            if match:
                self.includes.append((number, match[1], match[2]))

    def code_lines(self):
        return sum(1 for line in self.lines if line.strip() and not line.strip().startswith("//"))

    def rooms_used(self, rooms):
        for number, sign, what in self.includes:
            target = room_of(what.rpartition("/")[0], rooms) if sign == '"' else ""
            if target and target != self.room:
                yield number, target


def torn_comments(source):
    for number, line in enumerate(source.lines, 1):
        below = source.lines[number] if number < len(source.lines) else ""
        if re.match(r"// [a-z]+$", line) and below.startswith("//    "):
            yield f"{source.name}:{number}: a word that the formatter tore off its paragraph"


def strange_includes(source, rooms):
    for number, sign, what in source.includes:
        if sign == "<" and re.match(r"Q[A-Z]|Qt", what) and not source.is_face:
            yield f"{source.name}:{number}: Qt outside a ui folder"
    if source.room:
        for number, target in source.rooms_used(rooms):
            if target not in rooms[source.room]:
                yield f"{source.name}:{number}: {source.room} includes {target} and does not name it"


def sizes(source):
    limit = LIMITS.get(source.suffix)
    if limit and len(source.lines) > limit:
        yield f"{source.name}:1: {len(source.lines)} lines, {limit} at most: find the seam"
    for line, length, head in functions(source.text):
        if length > FUNCTION_LIMIT:
            yield f"{source.name}:{line}: {head} has {length} lines, {FUNCTION_LIMIT} at most"


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


def circles(sources):
    circle = circle_in({source.name.removeprefix("src/"): [what for _, sign, what in source.includes
                                                           if sign == '"'] for source in sources})
    if circle:
        yield f"src/{circle[0]}:1: a circle of includes: {' -> '.join(circle)}"


def needs(sources, rooms):
    """The rooms that each room includes, in their order."""
    used = {room: set() for room in rooms}
    for source in sources:
        if source.room:
            used[source.room].update(target for _, target in source.rooms_used(rooms))
    return {room: [name for name in rooms if name in used[room]] for room in rooms}


def order(sources, rooms):
    names = list(rooms)
    used = needs(sources, rooms)
    for room, named in rooms.items():
        for below in named:
            if below not in rooms or names.index(below) >= names.index(room):
                yield f"{RULES}:1: {room} depends on {below}, which is not before it"
            elif below not in used[room]:
                yield f"{RULES}:1: {room} names {below} and does not include it"


def room_sizes(sources, rooms):
    """By lines of code: what explains a room does not make it too large."""
    for room in rooms:
        lines = sum(source.code_lines() for source in sources if source.room == room)
        if lines > ROOM_LIMIT:
            yield f"src/{room}:1: {lines} lines of code, {ROOM_LIMIT} at most for a room"


def test_sizes():
    for path in tracked("tests/*.h", "tests/*.cpp"):
        count = len(path.read_text().splitlines())
        if count > TEST_LIMIT:
            yield f"{path.relative_to(ROOT)}:1: {count} lines, {TEST_LIMIT} at most"


def program_of(name):
    """The files whose types meet in one program: all of src, each other folder of a program alone."""
    parts = name.split("/")
    return "/".join(parts[:2]) if parts[0] == "apps" else parts[0]


def names_twice(sources):
    """The linker joins two types of one name without a word: then one has the functions of the other."""
    places = {}
    for source in sorted(sources, key=lambda source: not source.in_src):
        for line, name in types(source.text):
            places.setdefault(name, []).append((program_of(source.name), f"{source.name}:{line}"))
    for name, at in places.items():
        for program, place in at[1:]:
            first = next(other for who, other in at if who in (program, "src"))
            if first != place:
                yield f"{place}: {name} is also the name of a type in {first}"


def main():
    rooms = rooms_in_order((ROOT / RULES).read_text())
    sources = [Source(path.relative_to(ROOT).as_posix(), path.read_text(), rooms)
               for path in tracked("src/*.h", "src/*.cpp", "apps/*.h", "apps/*.cpp", "include/*")]
    if sys.argv[1:] == ["--depends"]:
        for room, used in needs(sources, rooms).items():
            print(f"{room}: {' '.join(used)}")
        return 0
    breaches = [*order(sources, rooms), *room_sizes(sources, rooms), *circles(sources),
                *names_twice(sources), *test_sizes()]
    for source in sources:
        breaches += [*torn_comments(source), *strange_includes(source, rooms), *sizes(source)]
    print("\n".join(breaches) if breaches else f"the house stands: {len(rooms)} rooms in order")
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main())
