"""One line typed in a shell: run to its end, or until it has shown that it works."""
import os
import re
import signal
import subprocess
import tempfile
from pathlib import Path

import known
from machines import DEADLINE_S, wait_for

PROGRAMS = ("trc", "quord", "tessera", "quor-bridge", "quor-demo")
TIME = r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}"
HERE_TO_MONITOR = " has connected to monitor"


def stopped_by(line):
    """The signal that ends what the line starts, if it runs until it is stopped."""
    program, _, rest = re.sub(r"^([A-Z_]+=\S+ )*(?:\S*/)?(?=\w)", "", line).partition(" ")
    if "--help" in rest or "--version" in rest:
        return None
    live = (program == "trc" and "--count" not in rest and
            re.match(r"(tail|capture|emit)\b|dump .*--follow\b|setup .*--monitor", rest))
    if live or program == "quor-demo":
        return signal.SIGINT
    if program == "quord" and re.search(r"--foreground|-f\b", rest):
        return signal.SIGTERM
    if program == "quor-bridge" and rest.startswith("otlp-"):
        return signal.SIGTERM
    return signal.SIGTERM if program == "tessera" and "--render" not in rest else None


def wait_for_words(where, pattern):
    wait_for(f"{pattern!r} in {where()!r}", lambda: re.search(pattern, where()))


class Typed:
    """`real` is run in the place of `line`; `server` is the machine whose service it speaks to."""

    def __init__(self, line, real, machine, folder, exports, server):
        self.line, self.machine, self.folder, self.server = line, machine, folder, server
        script = "\n".join(["set -e -o pipefail", *exports, real])
        self.out, self.err = tempfile.TemporaryFile(), tempfile.TemporaryFile()
        self.script = ["bash", "-c", script]
        self.process = None

    def told(self):
        return self.read(self.out) + self.read(self.err)

    def read(self, file):
        return os.pread(file.fileno(), 100_000, 0).decode(errors="replace")

    # Files, not pipes, because a program in the background keeps them open.
    def start(self):
        self.process = subprocess.Popen(
            self.script, cwd=self.folder, env=self.machine.environment(), stdin=subprocess.DEVNULL,
            stdout=self.out, stderr=self.err, start_new_session=True)

    def run(self):
        how = stopped_by(self.line)
        before = self.server.log().count(HERE_TO_MONITOR), self.instances()
        self.start()
        if how:
            wait_for(f"a sign of life; told {self.told()}", lambda: self.lives(before))
            self.signal(how)
        self.end()

    def start_and_keep(self):
        before = self.server.log().count(HERE_TO_MONITOR)
        self.start()
        wait_for("a monitor", lambda: self.server.log().count(HERE_TO_MONITOR) > before)

    def end(self):
        try:
            status = self.process.wait(DEADLINE_S)
        except subprocess.TimeoutExpired:
            self.signal(signal.SIGKILL)
            raise AssertionError(f"it does not end; told: {self.told()}") from None
        self.machine.said += self.told()
        wanted = known.STATUS.get(self.line, (0,))
        assert status in wanted, f"exit status {status}; told: {self.told()[-2000:]}"
        if re.search(r"\btrc (?!gen|emit|tail)", self.line):
            assert self.read(self.err) == "", f"told: {self.read(self.err)}"
        if "trc capture" in self.line and "--help" not in self.line:
            assert re.search(r"^[1-9]\d* taken, 0 lost$", self.told(), re.M), self.told()

    # Only the programs of this line, however the shell started them.
    def programs(self):
        found = []
        for folder in Path("/proc").iterdir():
            try:
                if (folder.name.isdigit() and os.getsid(int(folder.name)) == self.process.pid and
                        Path(os.readlink(folder / "exe")).name in PROGRAMS):
                    found.append(int(folder.name))
            except OSError:  # it has ended
                continue
        return found

    def signal(self, number):
        for pid in self.programs():
            os.kill(pid, number)

    def application(self):
        named = re.search(r"--(?:app|name) (\S+)", self.line)
        return named[1] if named else "orders"

    def instances(self):
        starts = re.search(r"\btrc emit|\bquor-demo", self.line)
        return self.server.instances(self.application()) if starts and self.server.serves() else 0

    # Checks that a program that runs until it is stopped does its work.
    def lives(self, before):
        assert self.process.poll() is None, f"it has ended; told: {self.told()}"
        monitors, instances = before
        if re.search(r"\btrc (tail|dump .*--follow)\b", self.line):
            return len(self.read(self.out).splitlines()) > 1
        if re.search(r"\btrc emit\b|\bquor-demo\b", self.line):
            return self.server.serves() and self.instances() > instances
        if re.search(r"\bquord\b", self.line):
            return self.server.serves()
        if "quor-bridge otlp-" in self.line:
            return "info: ready" in self.told()
        if "--monitor" in self.line:
            return self.server.log().count(HERE_TO_MONITOR) > monitors
        if re.search(r"\btrc capture\b", self.line):
            file = self.folder / re.search(r"-o (\S+)", self.line)[1]
            return file.exists() and file.stat().st_size > 1000
        return any(self.holds_a_trace_file(pid) for pid in self.programs())

    def holds_a_trace_file(self, pid):
        wanted = re.search(r"\S+\.trc", self.line)
        maps = Path(f"/proc/{pid}/maps").read_text()
        return f"/{wanted[0]}\n" in maps if wanted else ".so" in maps

    # The same rows as the page shows, but for the time of day.
    def check_shown(self, shown):
        wanted = re.sub(TIME, "TIME", shown).splitlines()
        wait_for(f"{len(wanted)} rows of {self.told()}",
                 lambda: len(self.read(self.out).splitlines()) >= len(wanted))
        self.signal(signal.SIGINT)
        self.end()
        given = re.sub(TIME, "TIME", self.read(self.out)).splitlines()
        assert given == wanted, "\n    ".join(["the page shows", *wanted, "printed is", *given])
