"""Finds the types that a C++ source defines at file scope: enough of the language for formatted code."""
import re

from long_functions import tokens

KEYS = {"class", "struct", "union", "enum"}


def without_template(words):
    while words[:1] == ["template"]:
        depth = end = 1
        while depth:
            end += 1
            depth += {"<": 1, ">": -1}.get(words[end], 0)
        words = words[end + 1:]
    return words


def name_of(words):
    """Of the type whose definition begins so; None: of no type, or of one inside another."""
    words = without_template(words)
    if "(" in words or not KEYS & set(words):
        return None
    after = words[max(words.index(key) for key in KEYS if key in words) + 1:]
    if after[:1] == ["["]:  # an attribute
        after = after[after.index("]") + 2:]
    if not after or not re.match(r"[A-Za-z_]", after[0]):
        return None
    # One colon is before a base, two are inside a nested name; "<": a specialisation.
    return None if after[1:3] == [":", ":"] or after[1:2] == ["<"] else after[0]


def types(text):
    """(line, name) of each type that other files can clash with; the name has its namespaces."""
    scopes, head = [], []  # a scope: a namespace's name, "" where nothing inside counts
    for line, token in tokens(text):
        if token == "{":
            words = [word for _, word in head]
            here = not scopes or "" not in scopes
            if words[:1] == ["namespace"] and len(words) > 1:
                scopes.append("".join(words[1:]) + "::")
            elif words[:1] == ["extern"]:
                scopes.append("extern")
            else:
                name = name_of(words) if here else None
                if name:
                    spaces = "".join(scope for scope in scopes if scope != "extern")
                    yield head[0][0], spaces + name
                scopes.append("")
            head = []
        elif token == "}":
            if scopes:
                scopes.pop()
            head = []
        elif token == ";":
            head = []
        else:
            head.append((line, token))
