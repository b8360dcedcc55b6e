"""Reads the examples out of pages: markdown, manual pages and what a program says on --help.

A page becomes its blocks, in their order: lines that a person types, files that the page gives, and
programs that are mentioned in its sentences. What is not understood raises NotUnderstood.
"""
import re
import subprocess
from dataclasses import dataclass, field
from pathlib import Path

PROGRAMS = r"(?:trc|quord|tessera|quor-bridge|quor-demo|dev|orders|ninja|systemctl|man|build/\S+)"
MENTION = re.compile(rf"^(?:sudo )?(?:[A-Z_]+=\S+ )*(?:\./)?{PROGRAMS} ")
COLUMNS = 80  # of a terminal
CODE_CALL = re.compile(r"^(?:QUOR_[A-Z_]+|quor_[a-z_]+)\(.*\)$")


class NotUnderstood(Exception):
    pass


@dataclass
class Block:
    """Lines to be typed one after the other, or one file, or one mention in a sentence."""
    page: str
    line: int
    section: str = ""
    typed: list = field(default_factory=list)
    shown: str = ""      # what the page says that is printed
    file: str = ""       # the name of the file that the page gives
    text: str = ""       # and its content
    mention: bool = False

    @property
    def place(self):
        return f"{self.page}:{self.line}"


class Markdown:
    def __init__(self, path, name):
        self.name = name
        self.blocks = []
        self.calls = []  # of the library, that a sentence or a table names
        self.section = ""
        self.prose, self.prose_line = [], 1
        self.lines = path.read_text().splitlines()
        at = 0
        while at < len(self.lines):
            at = self._take(at)
        self._end_prose(at)

    def _take(self, at):
        line = self.lines[at]
        fence = re.match(r"\s*```(\w*)$", line)
        if not fence:
            heading = re.match(r"#+ (.*)", line)
            if heading:
                self._end_prose(at)
                self.section = heading[1]
            self.prose.append(line)
            return at + 1
        before = next((text for text in reversed(self.prose) if text.strip()), "")
        self._end_prose(at)
        end = next(i for i in range(at + 1, len(self.lines)) if self.lines[i].strip() == "```")
        self._fenced(fence[1], self.lines[at + 1:end], at + 2, before)
        self.prose_line = end + 2
        return end + 1

    def _fenced(self, language, lines, number, before):
        if language == "sh":
            self._block(number, typed=typed_lines(lines))
        elif language == "ini":
            words = [line[10:] for line in lines if line.startswith("ExecStart=")]
            self._block(number, typed=[word for word in words if word])
        elif language == "" and self._last_typed():
            self._last_typed().shown = "\n".join(lines)
        else:
            name = re.fullmatch(r"`(\S+)`:", before)
            if language not in ("c", "cpp", "cmake", "python", "js", "json") or not name:
                raise NotUnderstood(f"{self.name}:{number}: a block that is no example")
            self._block(number, file=name[1], text="\n".join(lines) + "\n")

    def _last_typed(self):
        return next((block for block in reversed(self.blocks) if not block.mention), None)

    def _block(self, number, **what):
        self.blocks.append(Block(self.name, number, self.section, **what))

    def _end_prose(self, at):
        text = "\n".join(self.prose)
        for span in re.finditer(r"`([^`]+)`", text):
            code = " ".join(span[1].replace("\\|", "|").split())
            if CODE_CALL.match(code):
                self.calls.append(code)
            elif MENTION.match(code):
                line = self.prose_line + text.count("\n", 0, span.start())
                self._block(line, typed=[code], mention=True)
        self.prose, self.prose_line = [], at + 1


def typed_lines(lines):
    joined = re.sub(r"\\\n\s*", "", "\n".join(lines))
    return [line.strip() for line in joined.splitlines()
            if line.strip() and not line.strip().startswith("#")]


def manual(path):
    """The section EXAMPLES of a manual page."""
    lines = path.read_text().splitlines()
    start = lines.index(".SH EXAMPLES") + 1
    typed = []
    for line in lines[start:]:
        if line.startswith(".SH"):
            break
        if line in (".nf", ".fi", ".EX", ".EE"):
            continue
        if line.startswith("."):
            raise NotUnderstood(f"{path.name}: {line}")
        typed.append(line.replace("\\-", "-").replace("\\(aq", "'").replace("\\e", "\\"))
    return [Block(path.name, start, typed=typed)]


def helps(program, words=()):
    """The examples of a program's help and of the help of its commands."""
    words = [*words, "--help"]
    told = subprocess.run([program, *words], capture_output=True, text=True, check=True).stdout
    name = " ".join([Path(program).name, *words])
    for line in told.splitlines():
        if len(line) > COLUMNS:
            raise NotUnderstood(f"{name} has more than {COLUMNS} columns: {line}")
    blocks = []
    examples = re.search(r"^examples?:\n((?:  .*\n?)+)", told, re.M | re.I)
    if examples:
        # Behind three blanks stands a comment.
        typed = [re.split(r" {3,}", line)[0] for line in typed_lines(examples[1].splitlines())]
        blocks.append(Block(name, told[:examples.start()].count("\n") + 1, typed=typed))
    else:
        raise NotUnderstood(f"{name} has no example")
    commands = re.search(r"^Commands:\n((?:  .*\n?)+)", told, re.M)
    for command in re.findall(r"^  ([\w-]+)", commands[1], re.M) if commands else []:
        blocks += helps(program, [*words[:-1], command])
    return blocks
