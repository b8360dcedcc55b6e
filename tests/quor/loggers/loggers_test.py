#!/usr/bin/env python3
"""The adapters for loggers, with a service: the examples, and edges.cpp.

usage: loggers_test.py BUILD
"""
import re
import signal
import subprocess
import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parent.parent.parent.parent
sys.path.append(str(ROOT / "tests/bindings"))
from session import EVERYTHING, Session, line_of, severity  # noqa: E402

BUILD = Path(sys.argv.pop()).resolve()
EXAMPLES = ROOT / "examples/loggers"
EDGES = Path(__file__).resolve().parent / "edges.cpp"
# The traces of an example that has all severities: a text, and its severity.
LOGGED = (("connected to db.example.com in 12 ms", "Info"), ("query 7 took 2.5 s", "Warn"),
          ("for developers: off until it is switched on", "Info+Developer"), ("query 8 failed", "Error"))
session = prefix = None


def must(*words):
    ended = subprocess.run([str(word) for word in words], capture_output=True, text=True)
    assert ended.returncode == 0, f"{words}\n{ended.stdout}{ended.stderr}"
    return ended.stdout


def setUpModule():
    global session, prefix
    session = Session(BUILD)
    unittest.addModuleCleanup(session.stop)  # also where the rest of this fails
    prefix = session.folder / "prefix"
    must("cmake", "--install", BUILD, "--component", "quor", "--prefix", prefix)
    must("cmake", "-G", "Ninja", "-S", EXAMPLES, "-B", session.folder / "examples",
         f"-DCMAKE_PREFIX_PATH={prefix}", "-DCMAKE_BUILD_TYPE=Release")
    must("cmake", "--build", session.folder / "examples")
    flags = must("pkg-config", "--cflags", "--libs", "spdlog", "glib-2.0", "Qt6Core").split()
    must("c++", "-std=c++17", "-O1", "-fPIC", "-Wall", "-Wextra", "-Werror", f"-I{prefix}/include", EDGES, "-o",
         session.folder / "edges", *flags, "-lfmt", BUILD / "packaging/quor/libquor.so")


class Examples(unittest.TestCase):
    def check(self, name, wanted, located=True):
        source = EXAMPLES / name
        application = source.stem
        session.run([session.folder / "examples" / source.stem], QUOR_SETTINGS=EVERYTHING, G_MESSAGES_DEBUG="all")
        # All are called "orders": each has its own count of traces.
        type(self).before = getattr(type(self), "before", 0) + len(wanted)
        traces = session.traces("orders", type(self).before)[-len(wanted):]
        self.assertEqual([(trace["text"], severity(trace)) for trace in traces], list(wanted), application)
        for trace in traces:
            self.assertEqual((trace["component"], trace["category"]), ("orders", "db"))
        if not located:
            return
        text = source.read_text()
        files = {trace["file"] for trace in traces if trace["file"]}
        self.assertEqual({Path(file).name for file in files}, {name})
        lines = {trace["text"]: trace["line"] for trace in traces}
        self.assertEqual(lines["connected to db.example.com in 12 ms"], line_of(text, "connected to"))

    def test_spdlog(self):
        self.check("orders_spdlog.cpp", LOGGED)

    def test_qt(self):
        self.check("orders_qt.cpp", LOGGED)

    def test_glib(self):
        self.check("orders_glib.c", LOGGED)

    def test_stream(self):
        self.check("orders_stream.cpp", LOGGED[:2], located=False)

    def test_the_page_has_the_same_programs(self):
        page = (ROOT / "docs/from-your-logger.md").read_text()
        for source in sorted(EXAMPLES.glob("orders_*.c*")):
            block = re.search(rf"^`{source.name}`:\n\n```c(?:pp)?\n(.*?)^```", page, re.M | re.S)
            self.assertIsNotNone(block, source.name)
            self.assertEqual(block[1], source.read_text())


class Edges(unittest.TestCase):
    def edges(self, name, count, status=0, **more):
        session.run([session.folder / "edges", name], status, **more)
        return session.traces(name, count)

    def test_spdlog_levels(self):
        traces = self.edges("SpdlogLevels", 5, QUOR_SETTINGS=EVERYTHING)
        self.assertEqual([(severity(trace), trace["text"]) for trace in traces[:3]],
                         [("Info+Developer+Verbose", "level trace"), ("Info+Developer", "level debug"),
                          ("Error", "level critical")])
        self.assertEqual({(trace["component"], trace["category"]) for trace in traces[:3]}, {("Log", "spdlog")})
        self.assertEqual([(trace["component"], trace["category"]) for trace in traces[3:]], [("plain", "Log")] * 2)
        self.assertEqual(traces[4]["text"], "")
        self.assertEqual({trace["file"] for trace in traces}, {""})

    def test_spdlog_threads(self):
        traces = self.edges("SpdlogThreads", 200)
        for i in range(4):
            mine = [trace["text"] for trace in traces if trace["category"] == f"t{i}"]
            self.assertEqual(mine, [f"{n} of {i}" for n in range(50)])

    def test_qt_handlers(self):
        traces = self.edges("QtHandlers", 3, QUOR_SETTINGS=EVERYTHING)
        self.assertEqual([(severity(trace), trace["text"]) for trace in traces],
                         [("Info", "to the handler before, once"), ("Info+Developer", "in a circle"),
                          ("Error", "ä")])
        self.assertEqual({(trace["component"], trace["category"]) for trace in traces}, {("Log", "Qt")})

    def test_qt_fatal(self):
        traces = self.edges("QtFatal", 1, -signal.SIGABRT)
        self.assertEqual((severity(traces[0]), traces[0]["text"]), ("Error", "the end"))

    def test_stream_lines(self):
        traces = self.edges("StreamLines", 7)
        self.assertEqual([trace["text"] for trace in traces],
                         ["one line", "two", "three", "x4", "y" * 65534, "äz", "the rest"])

    def test_stream_threads(self):
        traces = self.edges("StreamThreads", 402)
        self.assertEqual([trace["text"] for trace in traces[400:]],
                         ["another thread's line", "begun here, ended here"])
        self.assertEqual(sorted(trace["text"] for trace in traces[:400]),
                         sorted(str(i) * 3 for i in range(4) for _ in range(100)))
        self.assertEqual({severity(trace) for trace in traces}, {"Warn"})

    def test_glib_levels(self):
        traces = self.edges("GlibLevels", 5, QUOR_SETTINGS=EVERYTHING)
        self.assertEqual([(severity(trace), trace["component"], trace["category"], trace["text"]) for trace in traces],
                         [("Info", "edges", "glib", "level info"),
                          ("Info+Developer", "edges", "glib", "level debug"),
                          ("Info", "Log", "GLib", "by the older call"), ("Error", "own", "domain", "cut"),
                          ("Warn", "own", "domain", "")])
        self.assertEqual((traces[3]["file"], traces[3]["line"]), ("own.c", 12))


if __name__ == "__main__":
    unittest.main()
