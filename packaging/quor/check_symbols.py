#!/usr/bin/env python3
"""Checks that libquor exports what its header declares, and nothing else.

`check_symbols.py LIBRARY`: the functions of quor.h, those of the library with their version nodes,
and those of the Debian symbols file are the same. Prints what is wrong and exits 1 then.
"""
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent


def exported(library):
    out = subprocess.run(["readelf", "--dyn-syms", "--wide", library], capture_output=True, text=True,
                         check=True).stdout
    rows = (line.split() for line in out.splitlines())
    return {row[7].replace("@@", "@") for row in rows
            if len(row) > 7 and row[4] in ("GLOBAL", "WEAK") and row[6] not in ("UND", "ABS")}


def declared():
    header = (ROOT / "include/quor/quor.h").read_text()
    return set(re.findall(r"^QUOR_API\s[^;(]*?(\w+)\(", header, re.M))


def in_symbols_file():
    text = (ROOT / "packaging/debian/libquor1.symbols").read_text()
    return set(re.findall(r"^ (quor_\S+) ", text, re.M))


def main():
    symbols = exported(sys.argv[1])
    names = {symbol.partition("@")[0] for symbol in symbols}
    wrong = [f"{name} is in quor.h but not exported: enter it into quor.map"
             for name in sorted(declared() - names)]
    wrong += [f"{name} is exported but not in quor.h" for name in sorted(names - declared())]
    wrong += [f"{symbol} has no version node" for symbol in sorted(symbols)
              if not re.search(r"@QUOR_\d+\.\d+$", symbol)]
    wrong += [f"{symbol} is exported but not in libquor1.symbols"
              for symbol in sorted(symbols - in_symbols_file())]
    wrong += [f"{symbol} is in libquor1.symbols but not exported"
              for symbol in sorted(in_symbols_file() - symbols)]
    print("\n".join(wrong) if wrong else f"{len(symbols)} functions are exported as declared")
    return 1 if wrong or not symbols else 0


if __name__ == "__main__":
    sys.exit(main())
