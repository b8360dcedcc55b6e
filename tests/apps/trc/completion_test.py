"""The completions of trc, typed in real shells, with names that are meant to do harm."""
import os
import pty
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent.parent
sys.path.append(str(ROOT / "tests/pages"))
from machines import DEADLINE_S, Machine, wait_for  # noqa: E402

BUILD = Path(sys.argv.pop(1)).resolve()
# An application for each first letter, so that one letter and the key Tab name it.
HOSTILE = {"a": "a b\tc", "b": "blank name", "c": "c$(touch {mark})", "d": "d`touch {mark}`", "e": "e'quote",
           "f": 'f"double', "g": "g;touch {mark}", "h": "h!!", "i": "i\\back", "j": "j&|<>*?[x]", "k": "k#~$HOME",
           "l": "l:colon=equal", "m": "m(brace){x,y}", "n": "n\ntouch {mark}\n", "o": "\x1b[31mo", "p": "päge"}
UNTYPABLE = "ano"
# Shows the words of a line, each in a line of its own, instead of running it.
SHOW = """trc() {{ if [ "$1" = complete ]; then command {trc} "$@"; else printf '<%s>\\n' "$@"; echo "=END"=; fi; }}\n"""
SETUP = {
    "bash": ["PS1='=READY='", "bind 'set enable-bracketed-paste off'", "bind 'set bell-style none'",
             ". {completions}/trc.bash", SHOW],
    "zsh": ["unsetopt beep; PS1='=READY='", "fpath=({completions} $fpath); autoload -Uz compinit; compinit -D -u", SHOW],
    "fish": ["function fish_prompt; echo -n '=READY='; end; function fish_greeting; end",
             "function trc; if test \"$argv[1]\" = complete; command {trc} $argv; else; printf '<%s>\\n' $argv; "
             "echo '=END''='; end; end", "source {completions}/trc.fish"],
}
START = {"bash": ["bash", "--norc", "--noprofile", "-i"], "zsh": ["zsh", "-f", "-i"],
         "fish": ["fish", "--no-config", "-i"]}


class Shell:
    def __init__(self, name, folder, machine):
        self.name, self.text = name, ""
        environment = {**machine.environment(), "TERM": "dumb", "TRC_COMPLETION_MS": "20000"}
        self.pid, self.terminal = pty.fork()
        if self.pid == 0:
            os.chdir(folder)
            os.execvpe(START[name][0], START[name], environment)
        for line in SETUP[name]:
            self.send(line.format(completions=ROOT / "packaging/completions", trc=BUILD / "bin/trc") + "\n")
        self.send("printf '=SET''UP='\n")
        self.read_to("=SETUP=")

    def send(self, text):
        os.write(self.terminal, text.encode())

    def read_to(self, end):
        """What comes until `end`, which is taken too."""
        until = time.monotonic() + DEADLINE_S
        while end not in self.text:
            if not select.select([self.terminal], [], [], max(0, until - time.monotonic()))[0]:
                raise AssertionError(f"{self.name}: no {end!r} in {self.text[-2000:]!r}")
            self.text += os.read(self.terminal, 65536).decode(errors="replace")
        told, self.text = self.text.split(end, 1)
        return told

    def words_of(self, line):
        """The words that the shell makes of a typed line."""
        self.send(line + "\n")
        return re.findall(r"^<(.*)>\r*$", self.read_to("=END="), re.MULTILINE)

    def stop(self):
        os.kill(self.pid, signal.SIGKILL)
        os.waitpid(self.pid, 0)
        os.close(self.terminal)


class Completion(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp(prefix="completion-"))
        cls.machine = Machine(cls.folder, "here", BUILD / "bin")
        cls.mark = cls.folder / "done"
        status, told = cls.machine.ask("quord")
        assert status == 0, told
        cls.names = {letter: name.replace("{mark}", str(cls.mark)) for letter, name in HOSTILE.items()}
        cls.names["r"] = "running"
        for name in cls.names.values():
            status, told = cls.machine.ask("trc", "set", "--persist", name, "--all", "off")
            assert status == 0, told
        cls.traced = subprocess.Popen([f"{BUILD}/bin/trc", "emit", "--app", "running", "--components", "Net $(x),Db"],
                                      env=cls.machine.environment(), stdout=subprocess.DEVNULL,
                                      stderr=subprocess.DEVNULL)
        wait_for("running is here", lambda: cls.machine.instances("running") == 1)
        status, told = cls.machine.ask("trc", "gen", "-n", "500", str(cls.folder / "some traces.trc"))
        assert status == 0, told
        (cls.folder / "folder").mkdir()
        for name in "zipped.trc.gz", "folder/inner.zst":
            (cls.folder / name).touch()

    @classmethod
    def tearDownClass(cls):
        cls.traced.kill()
        cls.traced.wait()
        cls.machine.stop()
        shutil.rmtree(cls.folder)

    def complete(self, *words, limit_ms="20000"):
        began = time.monotonic()
        environment = {**self.machine.environment(), "TRC_COMPLETION_MS": limit_ms}
        told = subprocess.run([f"{BUILD}/bin/trc", "complete", *words], env=environment, capture_output=True, text=True, timeout=DEADLINE_S)
        self.assertEqual((told.returncode, told.stderr), (0, ""))
        return told.stdout.splitlines(), time.monotonic() - began

    def try_shell(self, name):
        shell = Shell(name, self.folder, self.machine)
        try:
            for letter, full in self.names.items():
                if letter not in UNTYPABLE:
                    self.assertEqual(shell.words_of(f"trc show {letter}\t"), ["show", full])
            self.assertEqual(shell.words_of("trc set r\tNet\\ \\$\\(x\\)/Cl\t"),
                             ["set", "running", "Net $(x)/Close"])
            on = "ponents" if name == "fish" else "\t"  # fish puts a blank behind a word
            self.assertEqual(shell.words_of("trc dump some\\ traces.trc --check All\\ Sev\t"),
                             ["dump", "some traces.trc", "--check", "All Severities"])
            self.assertEqual(shell.words_of(f"trc tail --uncheck All\\ Com{on}/N\t"),
                             ["tail", "--uncheck", "All Components/Net $(x)"])
            self.assertEqual(shell.words_of("trc info zip\t"), ["info", "zipped.trc.gz"])
            self.assertEqual(shell.words_of("trc dump some\\ traces.trc fol\tinn\t"),
                             ["dump", "some traces.trc", "folder/inner.zst"])
            if name != "fish":  # it leaves a quote open
                self.assertEqual(shell.words_of("trc show 'b\t"), ["show", "blank name"])
                self.assertEqual(shell.words_of('trc show "c\t'), ["show", self.names["c"]])
        finally:
            shell.stop()
        self.assertFalse(self.mark.exists())

    def test_bash(self):
        self.try_shell("bash")

    def test_zsh(self):
        self.try_shell("zsh")

    def test_fish(self):
        self.try_shell("fish")

    def test_what_cannot_be_typed_is_not_offered(self):
        apps, _ = self.complete("--", "show", "")
        self.assertEqual(sorted(apps), sorted(name for letter, name in self.names.items() if letter not in UNTYPABLE))

    def test_settings_and_rules(self):
        self.assertEqual(self.complete("--", "set", "running", "Db", "In")[0], ["Info"])
        self.assertEqual(self.complete("--", "set", "-p", "running", "--all", "s")[0], ["support"])
        self.assertEqual(self.complete("--", "set", "running", "Db=Info+St")[0], ["Db=Info+Stack"])
        self.assertEqual(self.complete("--", "set", "running", "Db=m")[0], ["Db=max"])
        self.assertEqual(self.complete("--bash", "trc set running Db=m", " \t=:")[0], ["max"])
        self.assertEqual(self.complete("--bash", "cd x; trc set running 'D", " \t=:'")[0],
                         ["Db", "Db/Close", "Db/Connect", "Db/Request"])

    def test_names_of_the_given_files_and_of_what_runs(self):
        file = str(self.folder / "some traces.trc")
        self.assertEqual(self.complete("--", "dump", file, "--component", "Sq")[0], ["Sql"])
        self.assertEqual(self.complete("--", "find", "x", file, "--app=sh")[0], ["--app=shop"])
        self.assertEqual(self.complete("--", "tail", "--component", "D")[0], ["Db"])
        self.assertEqual(self.complete("--", "tail", "--app", "run")[0], ["running"])
        machines = self.complete("--", "tree", "--since", "1d ago", file, "-m", "")[0]
        self.assertIn("web-02", machines)
        other = str(self.folder / "other.trc")
        status, told = self.machine.ask("trc", "save", file, other, "--component", "Sql")
        self.assertEqual(status, 0, told)
        self.assertEqual(self.complete("--", "dump", other, "--component", "")[0], ["Sql"])
        self.assertEqual(self.complete("--", "dump", other, file, "--component", "Ca")[0],
                         self.complete("--", "dump", file, "--component", "Ca")[0])

    def test_names_of_packed_files(self):
        plain = self.folder / "some traces.trc"
        for tool, end in (("gzip", "gz"), ("zstd", "zst")):
            packed = self.folder / f"packed.trc.{end}"
            packed.write_bytes(subprocess.run([tool, "-c", plain], check=True, capture_output=True).stdout)
            self.assertEqual(self.complete("--", "dump", str(packed), "--component", "Sq")[0], ["Sql"])
        packed = self.folder / "packed.trc.gz"
        packed.write_bytes(packed.read_bytes()[:-100])
        self.assertEqual(self.complete("--", "dump", str(packed), "--component", "Sq")[0], ["Sql"])

    def test_profiles(self):
        environment = self.machine.environment()
        config = environment.get("XDG_CONFIG_HOME") or f"{environment['HOME']}/.config"
        profiles = Path(config, "tessera/profiles")
        profiles.mkdir(parents=True)
        for name in "Slow orders", "slack":
            (profiles / f"{name}.json").write_text(f'{{"format": "tessera-profile", "version": 1, "name": "{name}"}}')
        self.assertEqual(self.complete("--", "dump", "--profile", "S")[0], ["Slow orders"])
        self.assertEqual(self.complete("--", "find", "x", "--profile=s")[0], ["--profile=slack"])
        self.assertEqual(self.complete("--", "tree", "--profile", "")[0], [])

    def test_filter_text(self):
        file = str(self.folder / "some traces.trc")
        self.assertEqual(self.complete("--", "dump", file, "--where", "compo")[0], ["component"])
        self.assertEqual(self.complete("--", "dump", file, "--where", "component == Sq")[0], ["component == Sql"])
        self.assertIn("severity >= warn and ", [text + " " for text in
                      self.complete("--", "find", "x", file, "--where", "severity >= warn ")[0]])
        self.assertEqual(self.complete("--", "tree", file, "--where=severity >= e")[0], ["--where=severity >= error"])
        self.assertEqual(self.complete("--", "tail", "--where", "application == run")[0], ["application == running"])
        self.assertEqual(self.complete("--bash", f"trc dump '{file}' --where 'component == Sq", " \t='")[0],
                         ["component == Sql"])
        self.assertEqual(self.complete("--", "show", "--where", "compo")[0], [])

    def test_what_words_have_in_common_does_not_end_within_a_quoted_byte(self):
        for name in ("two words", "two:parts"):
            self.assertEqual(self.machine.ask("trc", "set", "--persist", name, "--all", "off"), (0, ""))
        self.assertEqual(self.complete("--bash", "trc show tw", " \t")[0], ["two\\ words", "two\\:parts", "two"])
        self.assertEqual(self.complete("--bash", "trc show 'tw", " \t'")[0], ["two words", "two:parts"])
        for name in ("two words", "two:parts"):
            self.assertEqual(self.machine.ask("trc", "forget", name), (0, ""))

    def test_a_service_that_hangs_does_not_hold_the_shell_up(self):
        self.assertIn("running", self.complete("--", "show", "r")[0])
        [service] = [int(folder.name) for folder in Path("/proc").iterdir() if folder.name.isdigit() and
                     self.is_our_service(folder)]
        os.kill(service, signal.SIGSTOP)
        try:
            answer, seconds = self.complete("--", "show", "r", limit_ms="")
        finally:
            os.kill(service, signal.SIGCONT)
        self.assertEqual(answer, [])
        self.assertLess(seconds, 3)  # 0.25 s, and what a loaded machine adds

    def is_our_service(self, folder):
        try:
            return (Path(os.readlink(folder / "exe")).name == "quord" and
                    f"XDG_RUNTIME_DIR={self.machine.runtime}".encode() in (folder / "environ").read_bytes())
        except OSError:
            return False

    def test_without_a_service_none_is_started(self):
        other = Machine(self.folder, "other", BUILD / "bin")
        told = subprocess.run([f"{BUILD}/bin/trc", "complete", "--", "show", ""], 
                              env={**other.environment(), "TRC_COMPLETION_MS": "20000"}, capture_output=True, timeout=DEADLINE_S)
        self.assertEqual((told.returncode, told.stdout, told.stderr), (0, b"", b""))
        self.assertFalse(other.serves())


if __name__ == "__main__":
    unittest.main()
