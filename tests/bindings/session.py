"""A service, a monitor that writes down all traces, and programs that are traced."""
import json
import re
import subprocess
import sys
import tempfile
import textwrap
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.append(str(ROOT / "tests/pages"))
from machines import DEADLINE_S, Machine, wait_for  # noqa: E402

EVERYTHING = "*=Info+Warn+Error+Developer+Verbose+Location"
SEVERITIES = {1: "Info", 2: "Warn", 4: "Error", 9: "Info+Developer", 25: "Info+Developer+Verbose"}


class Session:
    def __init__(self, build):
        self._folder = tempfile.TemporaryDirectory(prefix="bindings-")
        self.folder = Path(self._folder.name)
        self.machine = Machine(self.folder, "here", build / "bin")
        self.machine.extra = {"LD_LIBRARY_PATH": str(build / "packaging/quor"), "QUOR_AUTOSTART": "0",
                              "PYTHONDONTWRITEBYTECODE": "1"}
        self._read, self._rest, self._traces = 0, b"", []
        status, told = self.machine.ask("quord")
        assert status == 0, told
        self._shown = open(self.folder / "shown.jsonl", "wb")
        self._tail = subprocess.Popen([f"{build}/bin/trc", "tail", "--format", "jsonl"],
                                      env=self.machine.environment(), stdout=self._shown)
        wait_for("a monitor", lambda: " has connected to monitor" in self.machine.log())

    def stop(self):
        self._tail.terminate()
        self._tail.wait(DEADLINE_S)
        self._shown.close()
        self.machine.stop()
        self._folder.cleanup()

    def environment(self, **more):
        return {**self.machine.environment(), **more}

    def start(self, words, **more):
        return subprocess.Popen([str(word) for word in words], env=self.environment(**more), cwd=self.folder,
                                stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def run(self, words, status=0, **more):
        """What the program has told on its two outputs. It must end with this status."""
        program = self.start(words, **more)
        try:
            told = program.communicate(timeout=DEADLINE_S)
        except subprocess.TimeoutExpired:
            program.kill()
            raise
        assert program.returncode == status, f"ended with {program.returncode}: {told}"
        return told

    def write(self, name, text):
        (self.folder / name).write_text(textwrap.dedent(text))
        return self.folder / name

    def traces(self, application, count):
        """The traces of this application, when there are so many of them; more are a failure."""
        wait_for(f"{count} traces of {application}", lambda: len(self._of(application)) >= count)
        found = self._of(application)
        assert len(found) == count, f"{len(found)} traces, not {count}: {found[-5:]}"
        return found

    def all_traces(self):
        with open(self.folder / "shown.jsonl", "rb") as file:
            file.seek(self._read)
            data = file.read()
        self._read += len(data)
        *lines, self._rest = (self._rest + data).split(b"\n")
        self._traces += map(json.loads, lines)
        return self._traces

    def _of(self, application):
        return [trace for trace in self.all_traces()
                if trace["application"] == application and trace["component"] != "Quor"]


class TracedProgram(unittest.TestCase):
    """`run_program` runs a program that has the name of the test, and is an application of that name.

    A language gives the ending of its files, and `words`, which writes a program and says how it is run.
    """

    session = None
    ending = ""
    more = {}  # in the environment of the programs

    def setUp(self):
        self.name = self.id().rpartition(".")[2].removeprefix("test_")
        self.path = self.session.folder / (self.name + self.ending)

    def start_program(self, text, **more):
        return self.session.start(self.words(text), **self.more, **more)

    def run_program(self, text, status=0, **more):
        return self.session.run(self.words(text), status, **self.more, **more)

    def line(self, words):
        return line_of(self.path.read_text(), words)

    def texts(self, count, name=None):
        return [trace["text"] for trace in self.session.traces(name or self.name, count)]


def severity(trace):
    return SEVERITIES[trace["attributes"]]


def line_of(text, words):
    """The number of the only line with these words."""
    numbers = [number for number, line in enumerate(text.splitlines(), 1) if re.search(words, line)]
    assert len(numbers) == 1, f"{words}: {numbers}"
    return numbers[0]
