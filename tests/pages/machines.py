"""Machines for the examples: each is a home, a runtime folder and the processes that run in them."""
import json
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path

HERE = Path(__file__).resolve().parent
DEADLINE_S = 60


def wait_for(what, condition):
    end = time.monotonic() + DEADLINE_S
    while not (given := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"in {DEADLINE_S} s not: {what}")
        time.sleep(0.02)
    return given


def processes_of(runtime, *names):
    """Processes of these programs that were started in this runtime folder."""
    found = []
    mark = f"XDG_RUNTIME_DIR={runtime}".encode()
    for folder in Path("/proc").iterdir():
        try:
            if (folder.name.isdigit() and Path(os.readlink(folder / "exe")).name in names and
                    mark in (folder / "environ").read_bytes().split(b"\0")):
                found.append(int(folder.name))
        except OSError:  # it has ended, or is another user's
            continue
    return found


class Machine:
    def __init__(self, root, name, bin_folder):
        self.name, self.bin = name, bin_folder
        self.home, self.runtime = root / name / "home", root / name / "run"
        self.home.mkdir(parents=True)
        self.runtime.mkdir(mode=0o700)
        self.extra = {}
        self.said = ""  # what its programs said on the terminal
        self._demos = []

    def environment(self):
        ours = {name: value for name, value in os.environ.items()
                if not re.match(r"QUOR|XDG_|DISPLAY|WAYLAND|JOURNAL|LD_|DBUS|CDPATH|BASH_ENV", name)}
        path = f"{HERE}/stand_ins:{self.bin}:" + os.environ["PATH"]
        return {**ours, "HOME": str(self.home), "XDG_RUNTIME_DIR": str(self.runtime),
                "USER": os.environ.get("USER", "user"), "PATH": path, "TZ": "UTC",
                "PAGES_TEST": str(HERE), "PLAYED_HOSTS": str(self.home.parent.parent),
                "QT_QPA_PLATFORM": "offscreen", "LC_ALL": "C.UTF-8", **self.extra}

    def ask(self, *words):
        # A file, not a pipe, because a program in the background keeps it open.
        with tempfile.TemporaryFile("w+") as told:
            ended = subprocess.run([f"{self.bin}/{words[0]}", *words[1:]], env=self.environment(),
                                   cwd=self.home, stdout=told, stderr=told, timeout=DEADLINE_S)
            told.seek(0)
            return ended.returncode, told.read()

    def log(self):
        log = self.home / ".local/state/quor/quord.log"
        return log.read_text() if log.exists() else ""

    def serves(self):
        return self.ask("quord", "status")[0] == 0

    def instances(self, application):
        status, told = self.ask("trc", "apps", "--json")
        rows = json.loads(told) if status == 0 else []
        return sum(row["instances"] for row in rows if row["application"] == application)

    def port(self):
        """The port of the newest listener for other machines."""
        return re.findall(r"listening on \S+?:(\d+) ", self.said)[-1]

    def play(self, application):
        """Runs an application that traces, and with it a service."""
        if any(name == application for name, _ in self._demos):
            return
        demo = subprocess.Popen([f"{self.bin}/quor-demo", "--rate", "200", "--name", application],
                                env=self.environment(), stdout=subprocess.DEVNULL,
                                stderr=subprocess.DEVNULL)
        self._demos.append((application, demo))
        wait_for(f"{application} is here", lambda: self.serves() and self.instances(application) > 0)

    def stop(self):
        stuck = []
        for application, demo in self._demos:
            demo.send_signal(signal.SIGINT)
            try:
                demo.wait(DEADLINE_S)
            except subprocess.TimeoutExpired:
                demo.kill()
                demo.wait()
                stuck.append(application)
        self._demos = []
        for pid in processes_of(self.runtime, "quord", "trc", "tessera", "quor-demo", "orders"):
            os.kill(pid, signal.SIGTERM)
        wait_for("all has ended", lambda: not processes_of(self.runtime, "quord"))
        # If the runtime folder is on a disk, the memory of applications is elsewhere.
        segments = self.runtime / "quor/segments"
        if segments.is_symlink():
            shutil.rmtree(os.readlink(segments), ignore_errors=True)
        if stuck:
            raise RuntimeError(f"did not end: {', '.join(stuck)}")
