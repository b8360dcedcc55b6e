"""A walk through pages: runs their examples in order, as a user would type them."""
import os
import re
import shutil
import traceback

import known
from machines import HERE, Machine
from typed import Typed, stopped_by, wait_for_words

LIVE = r"\btrc (tail|capture|apps|show|set|sink|config|setup)\b|\btessera .*--monitor|\bquord (status|stop|reload)"
SERVES = r"\bquord( --(?!help|version)| -f|$)"
ON_FILES = {"info": "sample.trc", "dump": "sample.trc", "tree": "sample.trc",
            "export": "sample.trc rows.csv"}
COMMAND_ALONE = r"trc (?!apps)[a-z]+|trc config [a-z]+|quord keys( [a-z]+)?"
FAR = r"\borders1(\.example\.org)?(:7447)?(?= |$)"


class Tour:
    def __init__(self, root, build, files, far, pages):
        self.root, self.build, self.files, self.far, self.pages = root, build, files, far, pages
        self.root.mkdir()
        self.failures, self.used, self.count = [], set(), 0

    def walk(self):
        for number, (page, blocks) in enumerate(self.pages.items()):
            self.page, self.exports, self.machines = page, [], {}
            self.place = self.root / str(number)
            self.place.mkdir()
            try:
                self.folder = self.clone()
                for block in blocks:
                    self.take(block)
            except Exception:  # the other pages are walked all the same
                self.failures.append(f"{page}: {traceback.format_exc()}")
            for machine in self.machines.values():
                try:
                    machine.stop()
                except Exception:
                    self.failures.append(f"{page}: {traceback.format_exc()}")
            shutil.rmtree(self.place, ignore_errors=True)

    # A folder like a clone that has been built, with the files that the examples name.
    def clone(self):
        folder = self.place / "clone"
        (folder / "build").mkdir(parents=True)
        for file in self.files.iterdir():
            os.link(file, folder / file.name)
        (folder / "docs").symlink_to(HERE.parent.parent / "docs")
        for program in ("trc", "quord", "tessera", "quor-bridge", "quor-demo"):
            (folder / program).symlink_to(self.build / "bin" / program)
        for preset in ("release", "dev"):
            (folder / "build" / preset).symlink_to(self.build)
        return folder

    def machine(self, name):
        if name not in self.machines:
            self.machines[name] = Machine(self.place, name, self.build / "bin")
            for variable, value in known.INSTALLED.get(self.page, {}).items():
                self.machines[name].extra[variable] = value.format(
                    build=self.build, root=HERE.parent.parent, home=self.machines[name].home)
        return self.machines[name]

    def take(self, block):
        if block.file:
            self.take_file(block)
            return
        if self.folder.name == "in-c" and block.section != self.section_in_c:
            self.folder = self.folder.parent / "program"
        kept = None
        for line in block.typed:
            try:
                kept = self.run(block, line) or kept
                self.count += 1
            except Exception as error:
                self.failures.append(f"{block.place}: {line}\n    {type(error).__name__}: {error}")
        if block.shown:
            try:
                kept.check_shown(block.shown)
            except Exception as error:
                self.failures.append(f"{block.place}: what is printed\n    {error}")

    # A page that gives a program is followed in a folder for it; the one in C has its own.
    def take_file(self, block):
        if block.file.endswith(".py"):
            (self.folder / block.file).write_text(block.text)
            return
        in_c = block.file.endswith(".c")
        self.folder = self.machine("here").home / ("in-c" if in_c else "program")
        self.folder.mkdir(exist_ok=True)
        self.section_in_c = block.section if in_c else ""
        (self.folder / block.file).write_text(block.text)

    # Returns a program that keeps running because the page shows its later output.
    def run(self, block, typed):
        line = re.sub(r"\s+# .*", "", typed)
        reason = next((entry for entry in known.NOT_RUN if re.fullmatch(entry, line)), None)
        if reason:
            self.used.add(reason)
            check_unrun(line)
            return None
        line = self.complete(line) if block.mention else line
        if line.startswith("export "):
            self.exports.append(line)
            return None
        machine = self.machine_for(block, typed)
        self.prepare(machine, block, line)
        example = Typed(line, self.real(machine, line), machine, self.folder, self.exports,
                        self.served_by(machine, line))
        if block.shown and stopped_by(line):
            example.start_and_keep()
            return example
        if line in known.STATUS:
            self.used.add(line)
        example.run()
        self.check_told(example)
        if self.page != known.REMOTE and (sink := re.match(r"trc sink (\S+) --file", line)):
            machine.ask("trc", "sink", sink[1], "--server", "localhost")
        if re.search(SERVES, line) and self.page != known.REMOTE:
            machine.stop()
        return None

    # A sentence may leave something out, or name it in capitals.
    def complete(self, line):
        if line in known.WHOLE:
            self.used.add(line)
            return known.WHOLE[line]
        if re.fullmatch(COMMAND_ALONE, line):
            return line + " --help"
        words = line.split(" ")
        for at, word in enumerate(words):
            if re.fullmatch(r"[A-Z]+(\.\.\.|\.[a-z]+|/[A-Z]+)?", word):
                self.used.add(word)
                words[at] = known.STANDS_FOR[word]
        line = " ".join(words)
        if words[0] == "trc" and words[1] in ON_FILES and ".trc" not in line and "--help" not in line:
            line += " " + ON_FILES[words[1]]
        return line

    def machine_for(self, block, typed):
        if self.page != known.REMOTE:
            return self.machine("here")
        said = re.search(r"# on (\w+)", typed)
        name = said[1] if said else next(
            entry[2] for entry in known.TYPED_ON
            if entry[0] in ("", block.section) and re.match(entry[1], typed))
        machine = self.machine(name)
        self.folder = machine.home
        if name == "account":
            machine.extra["QUOR_KEYS"] = f"{machine.home}/etc/quor/keys"
        return machine

    def prepare(self, machine, block, line):
        if re.search(SERVES, line) and self.page != known.REMOTE:
            machine.stop()  # one service at a time
        if line in known.BEFORE:
            self.used.add(line)
            Typed(known.BEFORE[line], known.BEFORE[line], machine, self.folder, [], machine).run()
        if line.startswith("trc sink shop"):
            machine.play("shop")
        elif re.search(LIVE, line) and not block.shown and "--help" not in line:
            self.served_by(machine, line).play("orders")
            if " localhost " in line:
                machine.play("orders")

    # The machine whose traces and settings the line is about.
    def served_by(self, machine, line):
        if self.page == known.REMOTE:
            return self.machine("orders1") if re.search(FAR, line) else machine
        return self.far if re.search(FAR, line) and re.search(LIVE, line) else machine

    # The line, with real names, ports and folders in place of those of the page.
    def real(self, machine, line):
        line = line.replace("0.0.0.0:7447", "127.0.0.1:0")
        line = re.sub(r"/etc/quor\b|/var/tmp\b", lambda match: f"{machine.home}{match[0]}", line)
        if re.search(FAR, line) and re.search(LIVE, line):
            far = self.served_by(machine, line)
            line = re.sub(FAR, f"localhost:{far.port()}", line)
            if far is self.far:
                line = f"QUOR_KEYS={far.home}/me {line}"
        return line

    def check_told(self, example):
        for page, words, line, machine in known.TOLD:
            if page != self.page or line != example.line:
                continue
            self.used.add(words)
            assert words in (HERE.parent.parent / page).read_text(), f"{page} does not say {words}"
            pattern = re.escape(words).replace(r"0\.0\.0\.0:7447", r"[0-9.]+:\d+")
            pattern = pattern.replace(r"orders1\.example\.org:7447", r"localhost:\d+")
            where = self.machine(machine).log if machine else example.told
            wait_for_words(where, pattern)


# Compares the words of a command that is not run with the script, the packages and the test of builds.
def check_unrun(line):
    words, root = line.split(), HERE.parent.parent
    for package in re.findall(r"build/package/(\S+)_\*\.deb", line):
        control = (root / "packaging/debian/control").read_text()
        assert f"Package: {package}\n" in control, f"there is no package {package}"
    for option in re.findall(r"-D(TESSERA_\w+)=", line):
        assert option in (root / "packaging/check_builds.py").read_text(), f"no test builds with {option}"
    script = (root / "dev").read_text()
    for package in re.findall(r"^sudo apt install ([\w-]+)$", line):
        packages = re.search(r"^TEST_PACKAGES=\(([^)]*)\)", script, re.M)[1].split()
        assert package in packages, f"./dev installs no {package} for the tests"
    if words[0] != "./dev":
        return
    wanted = [f"cmd_{words[1]}"] + [f"check_{step}" for step in words[2:] if words[1] == "check"]
    for function in wanted:
        assert re.search(rf"^ *{function}\(\)", script, re.M), f"./dev has no {function}"
