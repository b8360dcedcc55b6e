#!/usr/bin/env python3
"""Traces from real Python programs arrive as they were made.

usage: python_test.py BUILD [TEST...]

The programs run on a machine of their own with a service, see ../session.py.
"""
import re
import sys
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parent.parent))
from session import EVERYTHING, ROOT, Session, TracedProgram, severity, wait_for  # noqa: E402

PACKAGE = ROOT / "bindings/python"
session = None


def setUpModule():
    global session
    session = Traced.session = Session(BUILD)


def tearDownModule():
    session.stop()


class Traced(TracedProgram):
    ending = ".py"
    more = {"PYTHONPATH": str(PACKAGE)}

    def words(self, text):
        session.write(self.path.name, text)
        return [sys.executable, self.path]


class LoggingTest(Traced):
    def test_a_record_keeps_its_severity_names_and_place(self):
        self.run_program("""
            import logging, quor
            logging.basicConfig(level=1, handlers=[quor.Handler()])
            log = logging.getLogger("orders.db.pool")
            log.log(5, "finest")
            log.debug("fine %d", 1)
            log.info("plain %s", "text")
            log.warning("odd %(what)s", {"what": "thing"})
            log.error("bad")
            logging.getLogger("asyncio").critical("worst")
            logging.error("of the root")
            """, QUOR_SETTINGS=EVERYTHING)
        traces = session.traces(self.name, 7)
        self.assertEqual([(severity(t), t["component"], t["category"], t["text"]) for t in traces], [
            ("Info+Developer+Verbose", "orders", "db.pool", "finest"),
            ("Info+Developer", "orders", "db.pool", "fine 1"),
            ("Info", "orders", "db.pool", "plain text"),
            ("Warn", "orders", "db.pool", "odd thing"),
            ("Error", "orders", "db.pool", "bad"),
            ("Error", "asyncio", "Log", "worst"),
            ("Error", "root", "Log", "of the root")])
        self.assertEqual({t["file"] for t in traces}, {str(self.path)})
        first = self.line('"finest"')
        self.assertEqual([t["line"] for t in traces], list(range(first, first + 7)))

    def test_all_loggers_are_categories_of_one_component(self):
        self.run_program("""
            import logging.config
            logging.config.dictConfig({"version": 1,
                "handlers": {"quor": {"class": "quor.Handler", "component": "Shop", "level": "WARNING"}},
                "root": {"level": "DEBUG", "handlers": ["quor"]}})
            logging.getLogger("orders.db").info("below the level of the handler")
            logging.getLogger("orders.db").warning("slow")
            """)
        [trace] = session.traces(self.name, 1)
        self.assertEqual((trace["component"], trace["category"], trace["text"]), ("Shop", "orders.db", "slow"))
        self.assertEqual((trace["file"], trace["line"]), ("", 0), "no place where Location is off")

    def test_an_exception_is_traced_with_its_traceback(self):
        self.run_program("""
            import logging, quor
            logging.basicConfig(handlers=[quor.Handler()])
            try:
                {}["key"]
            except KeyError:
                logging.exception("not found")
            """)
        lines = self.texts(1)[0].splitlines()
        self.assertEqual((lines[0], lines[1], lines[-1]),
                         ("not found", "Traceback (most recent call last):", "KeyError: 'key'"))

    def test_a_record_that_is_off_is_not_formatted_until_it_is_switched_on(self):
        program = self.start_program("""
            import logging, quor
            logging.basicConfig(level=logging.DEBUG, handlers=[quor.Handler()])
            class Counted:
                count = 0
                def __str__(self):
                    Counted.count += 1
                    return "counted"
            log = logging.getLogger("orders.db")
            log.debug("%s", Counted())
            log.info("ready")
            print(Counted.count, flush=True)
            input()
            log.debug("%s", Counted())
            """)
        self.assertEqual(program.stdout.readline(), "0\n")
        self.texts(1)
        status, told = session.machine.ask("trc", "set", self.name, "--all", "Info", "Developer")
        self.assertEqual(status, 0, told)
        # The library takes new settings from its own thread.
        wait_for("the switch", lambda: "Developer" in session.machine.ask("trc", "show", self.name)[1])
        program.communicate("\n", timeout=60)
        self.assertEqual(self.texts(2)[1], "counted")

    def test_arguments_that_cannot_be_shown_harm_nobody(self):
        _, told = self.run_program("""
            import logging, quor
            handler = quor.Handler()
            logging.basicConfig(level=1, handlers=[handler])
            class Bad:
                def __str__(self): raise ValueError("no text")
                __repr__ = __str__
            class Endless:
                def __str__(self): return str(self)
                __repr__ = __str__
            class BadError(Exception):
                def __str__(self): raise self
            class Worse:
                def __str__(self): raise BadError()
                __repr__ = __str__
            for bad in Bad(), Endless(), Worse():
                logging.info("given %s", bad)
                logging.info(bad)
                quor.Point("A", "B").info("given %s", bad)
                quor.Point("A", "B").info(bad)
            logging.info("%d", "text")
            logging.info("%s %s", 1)
            quor.Point("A", "B").info("%s %s", 1)
            odd = {"name": None, "levelno": "high", "msg": None, "args": 5, "pathname": 7, "lineno": -1}
            for key, value in odd.items():
                handler.handle(logging.makeLogRecord({"name": "n", "levelno": 20, "lineno": 1, "msg": "odd",
                                                      key: value}))
            logging.getLogger("x\\0y").info("the end")
            """, QUOR_SETTINGS=EVERYTHING)
        # Only a record with a level that is no number cannot be traced.
        texts = self.texts(21)
        self.assertEqual(texts[0], "given %s (cannot be formatted: ValueError: no text)")
        self.assertIn("given %s (cannot be formatted: ValueError: no text)", texts[2])
        self.assertIn("Bad that cannot be shown: ValueError: no text", texts[3])
        self.assertIn("RecursionError", texts[4])
        self.assertEqual(texts[8], "given %s (cannot be formatted: BadError)")
        self.assertIn("%d (cannot be formatted: TypeError", texts[12])
        self.assertEqual(session.traces(self.name, 21)[-1]["category"], "Log")
        self.assertEqual(session.traces(self.name, 21)[-1]["component"], "x\\x00y")
        self.assertIn("--- Logging error ---", told)

    def test_ten_thousand_loggers_have_traces_of_their_own(self):
        self.run_program("""
            import logging, quor
            handler = quor.Handler(component="Many")
            for number in range(17000):
                handler.handle(logging.makeLogRecord({"name": f"logger{number}", "levelno": 20, "msg": "here"}))
            assert quor.counts().lost == 0, quor.counts()
            assert len(handler._points) <= 16384, len(handler._points)
            """)
        wait_for("all", lambda: len(session._of(self.name)) >= 16000)
        traces = session.traces(self.name, 16383)
        self.assertEqual([t["category"] for t in traces[:10000]], [f"logger{n}" for n in range(10000)])

    def test_a_filter_may_replace_or_drop_a_record(self):
        self.run_program("""
            import logging, quor
            handler = quor.Handler()
            def only_orders(record):
                return record.name.startswith("orders")
            handler.addFilter(only_orders)
            logging.basicConfig(level=1, handlers=[handler])
            logging.getLogger("other").info("dropped")
            logging.getLogger("orders").info("kept")
            """)
        self.assertEqual(self.texts(1), ["kept"])


class PointTest(Traced):
    def test_a_trace_has_the_place_of_its_caller(self):
        self.run_program("""
            import quor
            point = quor.Point("Net", "Connect")
            point.info("plain")
            point.warn("to %s", "host")
            point.error("failed: %d", 5)
            point.trace(quor.WARN | quor.DEVELOPER, "details")
            def log(text): point.trace(quor.INFO, text, stacklevel=2)
            log("of the caller")
            point.trace(quor.INFO, "beyond", stacklevel=99)
            """, QUOR_SETTINGS=EVERYTHING)
        traces = session.traces(self.name, 6)
        self.assertEqual([t["attributes"] for t in traces], [1, 2, 4, 10, 1, 1])
        self.assertEqual([t["text"] for t in traces],
                         ["plain", "to host", "failed: 5", "details", "of the caller", "beyond"])
        first = self.line('"plain"')
        self.assertEqual([t["line"] for t in traces], [first, first + 1, first + 2, first + 3, first + 5, 0])
        self.assertEqual({t["file"] for t in traces[:5]}, {str(self.path)})

    def test_texts_of_any_kind_arrive(self):
        self.run_program("""
            import os, quor
            point = quor.Point("Tex\\0te", "\\u4e2d")
            point.info("a\\0b")
            point.info("%s", os.fsdecode(b"/tmp/\\xff"))
            point.info("lone \\ud800")
            point.info("\\u20ac" * 1000000)
            point.info("\\U0001f600 100 %")
            point.info("")
            point.info(7)
            """)
        traces = session.traces(self.name, 7)
        texts = [t["text"] for t in traces]
        self.assertEqual(texts[0], "a\\x00b")
        self.assertEqual(texts[1], {"hex": b"/tmp/\xff".hex()})
        self.assertEqual(texts[2], "lone \\ud800")
        self.assertEqual(texts[3], "\u20ac" * 21845)
        self.assertEqual(texts[4:], ["\U0001f600 100 %", "", "7"])
        self.assertEqual({(t["component"], t["category"]) for t in traces}, {("Tex\\x00te", "\u4e2d")})

    def test_the_same_names_are_the_same_point(self):
        self.run_program("""
            import copy, pickle, quor
            point = quor.Point("Net", "Connect")
            assert quor.Point("Net", "Connect") is point
            assert pickle.loads(pickle.dumps(point)) is point and copy.deepcopy(point) is point
            for names in (None, "x"), ("x", 5), ("x", b"y"):
                try: quor.Point(*names)
                except TypeError: continue
                raise AssertionError(names)
            assert not point.is_on(quor.INFO | quor.DEVELOPER) and point.is_on()
            """)

    def test_the_name_is_that_of_the_script_or_module_unless_one_is_given(self):
        body = 'import quor; quor.Point("A", "B").info("one"); quor.application("later"); ' \
               'quor.Point("A", "B").info("two")'
        script = session.write("by_script.py", body)
        module = session.folder / "by_module"
        module.mkdir()
        (module / "__main__.py").write_text(body)
        for words, name in ([script], "by_script"), (["-m", "by_module"], "by_module"):
            session.run([sys.executable, *words], PYTHONPATH=f"{PACKAGE}:{session.folder}")
            self.assertEqual(self.texts(1, name), ["one"])
        self.assertEqual(self.texts(2, "later"), ["two", "two"])

    def test_the_name_is_that_of_the_script_also_where_others_have_begun(self):
        for name, begin in ("own_call", 'quor.thread_name("x")'), ("library", '_library.quor_thread_name(b"x")'):
            script = session.write(f"{name}.py", "import quor; from quor import _library\n"
                                   f'point = quor.Point("A", "B"); {begin}; point.info("one")')
            session.run([sys.executable, script], PYTHONPATH=str(PACKAGE))
            self.assertEqual(self.texts(1, name), ["one"])

    def test_no_thread_traces_before_the_program_has_its_name(self):
        self.run_program("""
            import quor, threading, time
            from quor import _library
            name_application = _library.quor_application
            begun = threading.Event()
            def slowly(name):
                begun.set()
                if name != b"given": time.sleep(0.2)
                name_application(name)
            _library.quor_application = slowly
            def trace(text): quor.Point("A", "B").info(text)
            first = threading.Thread(target=trace, args=("first",))
            first.start()
            begun.wait()
            trace("second")
            first.join()
            """)
        self.assertEqual(sorted(self.texts(2)), ["first", "second"])
        self.run_program(self.path.read_text().replace('trace("second")', 'quor.application("given")') +
                         '\ntrace("third")')
        self.assertEqual(self.texts(2, "given"), ["first", "third"])

    def test_what_is_kept_for_the_script_holds_from_the_first_trace_on(self):
        status, told = session.machine.ask("trc", "set", "--persist", self.name, "*=developer")
        self.assertEqual(status, 0, told)
        for begin in "", "quor.thread_name('x');":
            self.run_program(f"import quor; point = quor.Point('A', 'B'); {begin}\n"
                             "point.trace(quor.INFO | quor.DEVELOPER, 'first')", QUOR_WAIT="5000")
        self.assertEqual(self.texts(2), ["first", "first"])


class BlockTest(Traced):
    def test_blocks_begin_and_end(self):
        self.run_program("""
            import asyncio, quor
            point = quor.Point("Net", "Request")
            with quor.block(point, "with %d", 1): point.info("inside")
            @quor.block(point, "call")
            def call(n): return n + 1
            assert call(1) == 2 and call.__name__ == "call"
            @quor.block(point, "steps")
            def steps():
                got = yield 1
                return got
            running = steps(); next(running)
            point.info("between")
            try: running.send("x")
            except StopIteration as stop: assert stop.value == "x"
            @quor.block(point, "async")
            async def query():
                await asyncio.sleep(0)
                return 3
            assert asyncio.run(query()) == 3
            again = quor.block(point, "again")
            with again:
                with again: pass
            with quor.block(point, "off", attributes=quor.INFO | quor.DEVELOPER): pass
            try:
                @quor.block(point, "no")
                async def generator(): yield 1
            except TypeError: pass
            else: raise AssertionError
            """)
        self.assertEqual(self.texts(14), [
            "Begin: with 1", "inside", "End: with 1", "Begin: call", "End: call", "Begin: steps", "between",
            "End: steps", "Begin: async", "End: async", "Begin: again", "Begin: again", "End: again",
            "End: again"])

    def test_an_exception_ends_the_block_and_is_told_to_developers(self):
        self.run_program("""
            import quor
            point = quor.Point("Net", "Request")
            class Bad(Exception):
                def __str__(self): raise self
            for error in ValueError("no room"), Bad():
                try:
                    with quor.block(point, "work"): raise error
                except Exception as caught: assert caught is error
            """, QUOR_SETTINGS=EVERYTHING)
        traces = session.traces(self.name, 6)
        self.assertEqual([t["text"] for t in traces], [
            "Begin: work", "left by ValueError: no room", "End: work",
            "Begin: work", "left by Bad: (Bad that cannot be shown: Bad)", "End: work"])
        self.assertEqual([t["attributes"] for t in traces], [1, 9, 1] * 2)
        self.assertEqual({t["line"] for t in traces}, {self.line("with quor.block")})

    def test_tasks_and_threads_end_their_own_blocks(self):
        self.run_program("""
            import asyncio, threading, quor
            point = quor.Point("Net", "Request")
            async def task(name, pause):
                with quor.block(point, "task %s", name): await asyncio.sleep(pause)
            async def main():
                await asyncio.gather(task("slow", 0.05), task("fast", 0.01))
            asyncio.run(main())
            def work(name):
                quor.thread_name(name)
                with quor.block(point, "thread %s", name): pass
            threads = [threading.Thread(target=work, args=(f"worker {n}",)) for n in range(2)]
            for thread in threads: thread.start()
            for thread in threads: thread.join()
            """)
        traces = session.traces(self.name, 8)
        self.assertEqual([t["text"] for t in traces[:4]], [
            "Begin: task slow", "Begin: task fast", "End: task fast", "End: task slow"])
        for number in range(2):
            name = f"worker {number}"
            self.assertEqual([t["text"] for t in traces if t["tid"] == name],
                             [f"Begin: thread {name}", f"End: thread {name}"])


class ProcessTest(Traced):
    def test_a_killed_program_loses_nothing(self):
        self.run_program("""
            import logging, os, quor, signal
            logging.basicConfig(level=1, handlers=[quor.Handler()])
            for number in range(5000): logging.info("trace %d", number)
            os.kill(os.getpid(), signal.SIGKILL)
            """, status=-9)
        self.assertEqual(self.texts(5000), [f"trace {n}" for n in range(5000)])

    def test_forked_children_trace_as_processes_of_their_own(self):
        self.run_program("""
            import logging, multiprocessing, os, quor, threading
            logging.basicConfig(level=1, handlers=[quor.Handler()])
            def make_points():
                for number in range(8000): quor.Point("Made", str(number))
            maker = threading.Thread(target=make_points); maker.start()
            logging.info("parent %d", os.getpid())
            for _ in range(20):
                child = os.fork()
                if child == 0:
                    logging.info("child %d", os.getpid())
                    logging.getLogger("new.in.child").info("child %d", os.getpid())
                    os._exit(0)
                assert os.waitpid(child, 0)[1] == 0
            maker.join()
            def work(number): logging.info("child %d", os.getpid())
            process = multiprocessing.get_context("fork").Process(target=work, args=(1,))
            process.start(); process.join()
            assert process.exitcode == 0
            """)
        traces = session.traces(self.name, 42)
        for trace in traces:
            self.assertEqual(trace["text"].split()[1], trace["pid"])
        self.assertEqual(len({t["pid"] for t in traces}), 22)

    def test_threads_make_and_use_the_same_points_at_once(self):
        self.run_program("""
            import logging, quor, sys, threading
            sys.setswitchinterval(1e-6)
            logging.basicConfig(level=1, handlers=[quor.Handler()])
            start = threading.Barrier(8)
            def work(thread):
                start.wait()
                for number in range(500):
                    quor.Point("Shared", str(number)).info("%d/%d", thread, number)
                    logging.getLogger(f"shared.{number}").info("%d/%d", thread, number)
            threads = [threading.Thread(target=work, args=(n,)) for n in range(8)]
            for thread in threads: thread.start()
            for thread in threads: thread.join()
            assert quor.counts().lost == 0, quor.counts()
            assert quor.flush(float("inf"))
            quor.flush(float("nan"))
            """)
        traces = session.traces(self.name, 8000)
        for component in "Shared", "shared":
            found = sorted((t["text"], t["category"]) for t in traces if t["component"] == component)
            self.assertEqual(found, sorted((f"{a}/{b}", str(b)) for a in range(8) for b in range(500)))

    def test_signals_and_threads_at_the_end_do_not_disturb(self):
        program = """
            import logging, quor, signal, threading
            logging.basicConfig(level=1, handlers=[quor.Handler()])
            number = 0
            def tick(*_):
                global number
                number += 1
                logging.getLogger(f"tick.{number % 100}").info("tick")
            signal.signal(signal.SIGALRM, tick)
            signal.setitimer(signal.ITIMER_REAL, 0.0005, 0.0005)
            def run():
                at = 0
                while True:
                    at += 1
                    quor.Point("Run", str(at % 3000)).info("run")
            threading.Thread(target=run, daemon=True).start()
            for at in range(3000): quor.Point("Main", str(at)).info("main")
            signal.setitimer(signal.ITIMER_REAL, 0)
            """
        for _ in range(5):
            self.run_program(program, QUOR_SETTINGS="Run=off")
        mains = [t for t in session._of(self.name) if t["component"] == "Main"]
        wait_for("all of main", lambda: len(
            [t for t in session._of(self.name) if t["component"] == "Main"]) == 15000)
        self.assertLessEqual(len(mains), 15000)


class PackageTest(Traced):
    def test_a_library_that_cannot_be_loaded_is_named_with_its_package(self):
        folder = session.folder / "broken"
        folder.mkdir()
        (folder / "libquor.so.1").write_text("")
        _, told = self.run_program("import quor", status=1, LD_LIBRARY_PATH=str(folder))
        self.assertRegex(told.splitlines()[-1],
                         r"^ImportError: libquor\.so\.1 cannot be loaded: .*package libquor1")

    def test_pip_installs_it_without_compiler_and_network(self):
        target = session.folder / "installed"
        source = session.folder / "source"
        session.run(["cp", "-r", PACKAGE, source])
        session.run([sys.executable, "-m", "pip", "--disable-pip-version-check", "install", "--quiet",
                     "--root-user-action=ignore", "--no-index", "--no-deps", "--no-build-isolation", "--target",
                     target, source], CC="/bin/false", CXX="/bin/false")
        script = session.write(self.path.name, """
            import quor
            from importlib.metadata import version
            point = quor.Point("A", "B"); point.info(version("quor"))
            assert quor.__file__.startswith("%s"), quor.__file__
            """ % target)
        session.run([sys.executable, script], PYTHONPATH=str(target))
        numbers = re.findall(r"#define QUOR_VERSION_\w+ (\d+)$", (ROOT / "include/quor/version.h").read_text(),
                             re.M)
        self.assertEqual(self.texts(1), [".".join(numbers)])
        self.assertTrue((target / "quor/py.typed").exists())

    def test_the_examples_are_those_of_the_page(self):
        """tests/pages runs them."""
        page = (ROOT / "docs/from-your-logger.md").read_text()
        examples = list((PACKAGE / "examples").glob("*.py"))
        self.assertEqual(len(examples), 2)
        for example in examples:
            self.assertIn(f"`{example.name}`:\n\n```python\n{example.read_text()}```\n", page)


if __name__ == "__main__":
    BUILD = Path(sys.argv.pop(1)).resolve()
    unittest.main()
