"""Finds the functions of a C++ source with their lengths: enough of the language for formatted code."""
import re

TOKEN = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"\(.*?\)"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'|^[ \t]*#(?:\\\n|[^\n])*|\n|[A-Za-z_]\w*|\d[\w\'.]*|\S',
    re.S | re.M)
SCOPES = {"namespace", "class", "struct", "union", "enum", "extern"}
# What may stand between the parameters of a function and its body.
AFTER_PARAMETERS = {")", "const", "noexcept", "override", "final", "mutable", "try", ">", "}"}


def tokens(text):
    """The words and signs of a text with the number of their line; no comments, no directives."""
    line = 1
    for match in TOKEN.finditer(text):
        token = match[0]
        if token != "\n" and not token.lstrip().startswith(("//", "/*", "#")):
            yield line, token
        line += token.count("\n")


def functions(text):
    """(first line, number of lines, head) of each function that has a body."""
    scopes, head, depth = [], [], 0  # head: what stands since the last declaration ended
    for line, token in tokens(text):
        if token in "([":
            depth += 1
        elif token in ")]":
            depth -= 1
        if token == "{":
            words = [word for _, word in head]
            inside = scopes and scopes[-1][0] != "scope"
            if inside or depth > 0:
                kind = "part"
            elif SCOPES & set(words) and "(" not in words:
                kind = "scope"
            elif "(" in words and words[-1] in AFTER_PARAMETERS | {"*", "&"}:
                kind = "function"
            elif "(" in words and "->" in words:
                kind = "function"
            else:
                kind = "part"
            scopes.append((kind, head if kind == "function" else None))
            if kind != "part":
                head = []
            elif not inside:
                head.append((line, token))
        elif token == "}":
            if not scopes:
                continue
            kind, begin = scopes.pop()
            if kind == "function":
                yield begin[0][0], line - begin[0][0] + 1, "".join(word for _, word in begin[:12])
                head = []
            elif kind == "scope":
                head = []
            elif not scopes or scopes[-1][0] == "scope":
                head.append((line, token))
        elif token == ";" and depth == 0:
            head = []
        elif token == ":" and [word for _, word in head] in (["public"], ["protected"], ["private"]):
            head = []
        elif not scopes or scopes[-1][0] == "scope":
            head.append((line, token))
