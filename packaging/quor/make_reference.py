#!/usr/bin/env python3
"""Writes the reference of the library's interface from its headers.

Usage: make_reference.py man|markdown HEADERS VERSION > PAGE

A comment of a header describes the declarations that follow it, up to the next empty line or comment.
"""
import re
import sys
import textwrap
from pathlib import Path

# In the order of the page. What other headers have stands in their first comment.
C_HEADERS = ("quor.h", "block.h", "types.h", "version.h")
DECLARATION = re.compile(
    r"(?<!#define )QUOR_API\b.*?;|static inline (?!void quor_block_leave)[^{]*|typedef struct.*?\n}.*?;", re.S
)
MACRO = re.compile(r"#define (QUOR_[A-Z_0-9]+\b(?<!_H)(?<!_))(\([^)]*\))?(.*)")
# Steps of the macros, for nobody else.
INNER = ("QUOR_API", "QUOR_JOIN", "QUOR_UNREGISTERED")


def comment_text(comment):
    """Without its frame. Indented lines stay lines of their own."""
    lines = re.sub(r"^/\*+|\*/$", "", comment.strip()).split("\n")
    lines = [re.sub(r"^\s*(\*|//) ?", "", line).rstrip() for line in lines]
    return "\n".join(lines).strip()


def first_comment(text):
    if text.startswith("/*"):
        return comment_text(text[: text.index("*/") + 2])
    return comment_text("\n".join(re.match(r"((//.*\n)+)", text)[0].splitlines()))


def joined(text):
    """With each macro in one line, and nothing of what has no say in the interface."""
    text = re.sub(r"[ ]*\\\n\s*", " ", text)
    text = re.sub(r"(?ms)^#ifdef __cplusplus\n.*?^#(endif|else)\n", "", text)
    return re.sub(r"(?m)^#(if|ifdef|ifndef|else|endif|include).*\n", "\n", text)


def tidy(declaration):
    declaration = re.sub(r"\bQUOR_API\s+|static inline\s+", "", declaration)
    declaration = re.sub(r"\s*__attribute__\(\((?:[^()]|\([^()]*\))*\)\)", "", declaration)
    if not declaration.startswith("typedef"):
        declaration = re.sub(r"\s+", " ", declaration).strip().rstrip(";") + ";"
        inside = " " * (declaration.index("(") + 1)
        declaration = "\n".join(textwrap.wrap(declaration, 78, subsequent_indent=inside))
    return declaration


def declarations(text):
    """Of the piece behind a comment."""
    found = [(match.start(), tidy(match[0])) for match in DECLARATION.finditer(text)]
    for match in MACRO.finditer(text):
        name, arguments, value = match.groups()
        if name in INNER or not (arguments or value.strip()):
            continue
        found.append((match.start(), name + arguments if arguments else f"{name} {value.strip()}"))
    return [declaration for _, declaration in sorted(found)]


def pieces(text):
    """(comment, declarations) in the order of the header, its first comment left out."""
    text = joined(text)
    parts = re.split(r"(?ms)^(/\*.*?\*/)\n", text)
    for at in range(1, len(parts), 2):
        names = declarations(parts[at + 1])
        if names:
            yield comment_text(parts[at]), names


def paragraphs(text):
    """The first comment's paragraphs; a word before three blanks is a label, and what is indented
    by two is code."""
    for paragraph in re.split(r"\n\s*\n", text):
        labelled = re.split(r"(?m)^(?=[A-Z][a-z]+ {2,})", paragraph)
        for part in filter(str.strip, labelled):
            label = re.match(r"([A-Z][a-z]+) {2,}", part)
            if label:
                yield label[1], re.sub(r"\s+", " ", part[label.end() :]).strip()
            elif all(line.startswith("  ") for line in part.strip("\n").split("\n")):
                yield "code", part.strip("\n")
            else:
                yield "", re.sub(r"\s+", " ", part).strip()


class Man:
    def __init__(self, version, functions):
        self.out = [f'.TH QUOR 3 "" "libquor {version}" "Library Functions Manual"']
        self.head("NAME")
        self.out += [", ".join(["quor", *functions]) + " \\- tracing for any application"]
        self.head("SYNOPSIS")
        self.code("#include <quor/quor.h>\n\ncc program.c $(pkg-config --cflags --libs quor)")

    def escaped(self, text):
        text = text.replace("\\", "\\e").replace("-", "\\-")
        return re.sub(r"(?m)^([.'])", r"\\&\1", text)

    def head(self, words):
        self.out += [".SH " + words]

    def code(self, text):
        self.out += [".PP", ".nf", self.escaped(text), ".fi"]

    def text(self, text, label=""):
        self.out += [f".TP\n.B {label}" if label else ".PP", self.escaped(text)]

    def end(self):
        self.head("SEE ALSO")
        self.out += [".BR trc (1),\n.BR quord (1),\n.BR tessera (1)"]


class Markdown:
    def __init__(self, version, _):
        self.out = [f"# The interface of libquor {version}\n\nMade from the headers in `include/quor`.\n"]

    def head(self, words):
        self.out += [f"## {words}\n"]

    def code(self, text):
        self.out += [f"```c\n{text}\n```\n"]

    def text(self, text, label=""):
        self.out += [f"**{label}:** {text}\n" if label else text + "\n"]

    def end(self):
        pass


def write_intro(page, text):
    for label, words in paragraphs(text):
        if label == "code":
            page.code(words)
        else:
            page.text(words, label)


def functions(folder):
    text = joined((folder / "quor.h").read_text())
    return re.findall(r"\b(quor_\w+)\(", "\n".join(tidy(m[0]).split(",")[0] for m in DECLARATION.finditer(text)))


def write(kind, folder, version):
    page = kind(version, functions(folder))
    page.head("quor.h")
    write_intro(page, first_comment((folder / "quor.h").read_text()))
    for name in C_HEADERS:
        for comment, names in pieces((folder / name).read_text()):
            page.code("\n".join(names))
            page.text(re.sub(r"\s+", " ", comment))
    # Those that no header includes are for users, and quor.hpp is; the others are parts of these.
    texts = {path.name: path.read_text() for path in sorted(folder.glob("*.h*"))}
    parts = set(re.findall(r'(?m)^ *# *include "(?:quor/)?([\w.]+)"', "\n".join(texts.values())))
    for name, text in texts.items():
        if name == "quor.hpp" or name not in {*parts, *C_HEADERS}:
            page.head(name)
            write_intro(page, first_comment(text))
    page.end()
    return "\n".join(page.out)


if __name__ == "__main__":
    name, headers, number = sys.argv[1:]
    print(write({"man": Man, "markdown": Markdown}[name], Path(headers), number).rstrip())
