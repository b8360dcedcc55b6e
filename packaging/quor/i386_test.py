#!/usr/bin/env python3
"""A program of a 32-bit processor traces to a service of a 64-bit one, and is switched by it.

Usage: i386_test.py PROGRAM (the C example, built for i386) BIN (the folder of quord and trc)
"""
import json
import os
import select
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

PROGRAM, BIN = Path(sys.argv[1]), Path(sys.argv[2])
SECONDS = 30


class OtherProcessor(unittest.TestCase):
    def setUp(self):
        self.home = Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.home)
        self.environment = {
            "PATH": os.environ["PATH"],
            "HOME": str(self.home),
            "QUOR_SOCKET": str(self.home / "quor" / "quord.sock"),
            "QUOR_AUTOSTART": "0",
            "QUOR_WAIT": "10000",
        }
        self.service = self.start(BIN / "quord", "--foreground")
        self.await_that((self.home / "quor" / "quord.sock").exists)

    def start(self, *words):
        process = subprocess.Popen(
            [str(word) for word in words], env=self.environment, stdout=subprocess.PIPE, text=True
        )
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def trc(self, *words):
        return subprocess.run(
            [str(BIN / "trc"), *words], env=self.environment, check=True, capture_output=True, text=True
        ).stdout

    def await_that(self, holds):
        end = time.monotonic() + SECONDS
        while not holds():
            self.assertLess(time.monotonic(), end)
            time.sleep(0.02)

    def rows(self):
        """The traces of one run, once the monitor is there: it comes too late for the first runs."""
        tail = self.start(BIN / "trc", "tail", "--format", "jsonl", "--for", SECONDS)
        end = time.monotonic() + SECONDS
        while not select.select([tail.stdout], [], [], 0.1)[0]:
            self.assertLess(time.monotonic(), end)
            self.start(PROGRAM).wait()
        last = self.start(PROGRAM)
        last.wait()
        rows = []
        while not rows or rows[-1]["text"] != "End: query 2":
            row = json.loads(tail.stdout.readline())
            if row["pid"] == str(last.pid):
                rows.append(row)
        return rows

    def test_its_traces_arrive_whole(self):
        rows = self.rows()
        self.assertEqual(
            [(row["component"], row["category"], row["text"]) for row in rows],
            [
                ("Net", "Connect", "ready"),
                ("Net", "Connect", "connected to db.example.com in 2.5 s"),
                ("Database", "Query", "Begin: query 2"),
                ("Database", "Query", "query 2 failed"),
                ("Database", "Query", "End: query 2"),
            ],
        )

    def test_it_is_switched_before_its_first_trace(self):
        self.start(PROGRAM).wait()
        self.trc("set", "--persist", "orders", "Net=off;Database=max")
        rows = self.rows()
        self.assertEqual(
            [row["text"] for row in rows],
            ["Begin: query 2", "for developers: off until switched on", "query 2 failed", "End: query 2"],
        )


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
