#!/usr/bin/env python3
"""Runs every example of every page and checks that it does what the page says.

usage: examples_test.py BUILD

The examples are read out of the pages: README.md, CONTRIBUTING.md, SECURITY.md, docs/, the help inside
the program, the manual pages and the help of the programs. Each is run exactly as written, on a machine
of its own with a home, a service, an application and, if the page has one, another machine. A program
that runs until it is stopped is stopped when it has shown that it works. known.py lists what is not run.
"""
import gzip
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
from pathlib import Path

import known
from library_test import check_library
from machines import Machine
from read_pages import Markdown, helps, manual
from tour import Tour

ROOT = Path(__file__).resolve().parent.parent.parent
PROGRAMS = ("trc", "quord", "tessera", "quor-bridge", "quor-demo")
TRACING = "docs/tracing-your-application.md"
REFERENCE = "docs/api.md"  # made from the headers: packaging/quor/check_reference.py
LEAST_EXAMPLES = 200  # a reader that finds few is broken


def read_markdown():
    pages = [ROOT / name for name in ("README.md", "CONTRIBUTING.md", "SECURITY.md")]
    pages += sorted(set((ROOT / "docs").glob("*.md")) - {ROOT / REFERENCE})
    pages += sorted((ROOT / "src/shell/help/ui/help").glob("*.md"))
    return {str(page.relative_to(ROOT)): Markdown(page, str(page.relative_to(ROOT))) for page in pages}


def groups_of(pages, bin_folder):
    """Three independent walks: the two long pages, and all the rest by page."""
    rest = {}
    for name, page in pages.items():
        if name not in (TRACING, known.REMOTE):
            rest[name] = page.blocks
    for path in sorted((ROOT / "packaging/man").glob("*.1")):
        rest[path.name] = manual(path)
    for program in PROGRAMS:
        for block in helps(str(bin_folder / program)):
            rest[block.page] = [block]
    return [{TRACING: pages[TRACING].blocks}, {known.REMOTE: pages[known.REMOTE].blocks}, rest]


def samples(folder, bin_folder):
    """The files that the examples use."""
    folder.mkdir()
    trc = str(bin_folder / "trc")
    for name in ("sample.trc", "web.trc", "db.trc"):
        subprocess.run([trc, "gen", "-n", "200000", "-s", "7", str(folder / name)], check=True)
    subprocess.run([trc, "gen", "-n", "1000", "--old", str(folder / "old.trc")], check=True)
    write_logs(folder)
    (folder / "web.colours").write_text(
        '{"colour-rules": 1, "rules": [{"name": "Errors", "where": "severity == error",'
        ' "ink": "#870000", "ground": "#ffd7d7"}]}')
    (folder / "slow.profile").write_text(
        '{"format": "tessera-profile", "version": 1, "name": "Slow orders", "filter": "delta > 1ms",'
        ' "columns": [{"name": "Time", "width": 90, "shown": true}]}')
    for name in ("orders.tcf", "all.tcf"):
        (folder / name).write_text('TCF Version 3.2\nAPP: "orders"\nTRACE: "Database" "Query" Info\n')
    return folder


def write_logs(folder):
    """Logs of other programs."""
    lines = "".join(f"Nov 21 09:41:{second:02} web cron[42]: run {second}\n" for second in range(60))
    for name in ("syslog", "syslog.1"):
        (folder / name).write_text(lines)
    with gzip.open(folder / "syslog.2.gz", "wt") as packed:
        packed.write(lines)
    (folder / "app.log").write_text("2026-11-21 09:41:07,123 WARN com.acme.Shop low stock\n" * 60)
    (folder / "app.jsonl").write_text(
        '{"time":"2026-11-21T09:41:07Z","level":"warn","svc":"shop","msg":"low stock"}\n' * 60)


    write_events(folder)


def write_events(folder):
    """Logs and spans of OpenTelemetry, and events of Chrome's trace format."""
    log = '{"timeUnixNano":"1795305600000000000","body":{"stringValue":"low stock"}}'
    (folder / "collected.jsonl").write_text(
        ('{"resourceLogs":[{"scopeLogs":[{"logRecords":[' + log + ']}]}]}\n') * 3)
    # A log with a time and nothing else, in its scope, in its resource.
    record = b"\x09" + (1795305600000000000).to_bytes(8, "little")
    scope = b"\x12" + bytes([len(record)]) + record
    resource = b"\x12" + bytes([len(scope)]) + scope
    request = b"\x0a" + bytes([len(resource)]) + resource
    (folder / "collected.pb").write_bytes((len(request).to_bytes(4, "big") + request) * 3)
    (folder / "trace.json").write_text(
        '[{"ph":"X","name":"frame","cat":"gfx","pid":1,"tid":2,"ts":1000,"dur":5000},\n')


def far_machine(root, bin_folder):
    """Another machine, reached by TLS, and the keys for it."""
    far = Machine(root, "far", bin_folder)
    for words in (["keys", "init"], ["keys", "issue", "me", "--role", "configure"],
                  ["--listen", "127.0.0.1:0"]):
        status, told = far.ask("quord", *words)
        assert status == 0, told
        far.said += told
    far.play("orders")
    return far


def heading_links(path):
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")
            for heading in re.findall(r"^#+ (.*)", path.read_text(), re.M)}


def check_links(pages):
    """Every link leads to an existing file and heading."""
    broken = []
    for page in pages:
        for link in re.findall(r"\]\((?!https?:)([^)]+)\)", (ROOT / page).read_text()):
            file, _, heading = link.partition("#")
            target = (ROOT / page).parent / file if file else ROOT / page
            if page.startswith("src/shell/help/") and file.startswith("images/"):
                target = ROOT / "docs" / file  # the help has the guide's pictures
            if not target.exists() or heading and heading not in heading_links(target):
                broken.append(f"{page}: {link} leads nowhere")
    return broken


def check_known(tours):
    """Every entry must be used by an example."""
    used = set().union(*(tour.used for tour in tours))
    entries = {*known.NOT_RUN, *known.STANDS_FOR, *known.WHOLE, *known.BEFORE, *known.STATUS,
               *(told[1] for told in known.TOLD)}
    return [f"known.py: {entry!r} serves no example" for entry in sorted(entries - used)]


def main():
    # A background job of a script ignores these signals, and its children would inherit that.
    for number in (signal.SIGINT, signal.SIGHUP, signal.SIGQUIT):
        signal.signal(number, signal.SIG_DFL)
    build = Path(sys.argv[1]).resolve()
    bin_folder = build / "bin"
    root = Path(tempfile.mkdtemp(prefix="pages-"))
    machines, failures = [], []
    try:
        pages = read_markdown()
        files = samples(root / "samples", bin_folder)
        far = far_machine(root, bin_folder)
        machines.append(far)
        tours = [Tour(root / f"tour{number}", build, files, far, group)
                 for number, group in enumerate(groups_of(pages, bin_folder))]
        threads = [threading.Thread(target=tour.walk) for tour in tours]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        for tour in tours:
            failures += tour.failures
        failures += check_known(tours) + check_links(pages)
        failures += check_library(root / "library", build, ROOT, pages[TRACING].calls)
        count = sum(tour.count for tour in tours)
        if count < LEAST_EXAMPLES:
            failures.append(f"only {count} examples were found")
    finally:
        for machine in machines:
            machine.stop()
        shutil.rmtree(root, ignore_errors=True)
    for failure in failures:
        print(failure)
    print(f"{count} examples were run, {len(failures)} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
