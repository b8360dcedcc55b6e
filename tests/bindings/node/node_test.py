#!/usr/bin/env python3
"""Traces from real Node programs arrive as they were made.

usage: node_test.py BUILD NODE [TEST...]

The programs run on a machine of their own with a service, see ../session.py.
"""
import json
import re
import shutil
import sys
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parent.parent))
from session import EVERYTHING, ROOT, Session, TracedProgram, severity, wait_for  # noqa: E402

SOURCE = ROOT / "bindings/node"
session = None


def setUpModule():
    global session
    session = Traced.session = Session(BUILD)
    Traced.more = {"NODE_PATH": str(BUILD / "bindings/node")}


def tearDownModule():
    session.stop()


class Traced(TracedProgram):
    ending = ".js"

    def words(self, text):
        session.write(self.path.name, "const quor = require('quor'); const assert = require('assert');\n" + text)
        return [NODE, self.path]


class LogTest(Traced):
    def test_lines_of_json_keep_severity_name_and_place(self):
        self.run_program("""
            const stream = new quor.LogStream();
            // As pino and bunyan write them.
            function log(entry) {
              stream.write(JSON.stringify({ time: 1, pid: 2, hostname: 'here', v: 1, ...entry }) + '\\n');
            }
            log({ level: 10, name: 'orders.db.pool', msg: 'finest' });
            log({ level: 20, name: 'orders:db', msg: 'fine', user: 7 });
            log({ level: 30, name: 'orders', msg: 'plain' });
            log({ level: 40, msg: 'odd' });
            log({ level: 50, msg: 'bad', err: { stack: 'Error: x\\n    at y' } });
            log({ level: 60, msg: 'worst' });
            stream.write('no json at all');
            """, QUOR_SETTINGS=EVERYTHING)
        traces = session.traces(self.name, 7)
        self.assertEqual([(severity(t), t["component"], t["category"], t["text"]) for t in traces], [
            ("Info+Developer+Verbose", "orders", "db.pool", "finest"),
            ("Info+Developer", "orders", "db", 'fine {"user":7}'),
            ("Info", "orders", "Log", "plain"),
            ("Warn", "Log", "Log", "odd"),
            ("Error", "Log", "Log", "bad\nError: x\n    at y"),
            ("Error", "Log", "Log", "worst"),
            ("Info", "Log", "Log", "no json at all")])
        self.assertEqual({t["file"] for t in traces}, {str(self.path)})
        self.assertEqual({t["line"] for t in traces[:6]}, {self.line("stream.write\\(JSON")})

    def test_the_place_is_the_caller_of_the_logger(self):
        logger = session.folder / "node_modules/logger"
        logger.mkdir(parents=True)
        (logger / "index.js").write_text("module.exports = (stream, entry) => stream.write(entry);\n")
        self.run_program("""
            const log = require('logger');
            const stream = new quor.LogStream();
            log(stream, { level: 'info', message: 'from here' });
            """, QUOR_SETTINGS=EVERYTHING)
        [trace] = session.traces(self.name, 1)
        self.assertEqual((trace["file"], trace["line"]), (str(self.path), self.line("from here")))

    def test_objects_of_winston_arrive_through_a_pipe_and_by_calls(self):
        self.run_program("""
            const { PassThrough } = require('stream');
            const stream = new quor.LogStream({ component: 'Shop' });
            assert(stream.log.length <= 2 && stream._writableState.objectMode);
            const logger = new PassThrough({ objectMode: true });
            logger.pipe(stream);
            const levels = ['error', 'warn', 'info', 'http', 'verbose', 'debug', 'silly', 'unheard of'];
            for (const level of levels) logger.write({ level, message: level, service: 'orders.db' });
            const circle = { level: 'info', message: 'circle' };
            circle.self = circle;
            logger.write(circle);
            logger.write({ level: 'info', message: 'big', number: 5n });
            logger.write({ level: 'info', get message() { throw new Error('no text'); } });
            stream.on('finish', () => stream.log({ level: 'info', message: 'the end' }));
            logger.end();
            """, QUOR_SETTINGS=EVERYTHING)
        traces = session.traces(self.name, 12)
        self.assertEqual([severity(t) for t in traces[:8]], [
            "Error", "Warn", "Info", "Info", "Info+Developer", "Info+Developer", "Info+Developer+Verbose", "Info"])
        self.assertEqual({(t["component"], t["category"]) for t in traces[:8]}, {("Shop", "orders.db")})
        self.assertRegex(traces[8]["text"], r'^circle .*Circular')
        self.assertEqual(traces[9]["text"], "big { number: 5n }")
        self.assertIn("no text", traces[10]["text"])
        self.assertEqual((traces[11]["category"], traces[11]["text"]), ("Log", "the end"))

    def test_the_console_is_traced_and_still_written(self):
        out, err = self.run_program("""
            const end = quor.traceConsole();
            console.log('a %s', 'log'); console.info('info'); console.debug('debug');
            console.warn('warn'); console.error(new Error('object').message);
            console.log();
            end();
            console.log('untraced');
            """, QUOR_SETTINGS=EVERYTHING)
        traces = session.traces(self.name, 6)
        self.assertEqual([(severity(t), t["text"]) for t in traces], [
            ("Info", "a log"), ("Info", "info"), ("Info+Developer", "debug"), ("Warn", "warn"),
            ("Error", "object"), ("Info", "")])
        self.assertEqual({t["file"] for t in traces}, {str(self.path)})
        self.assertEqual(out, "a log\ninfo\ndebug\n\nuntraced\n")
        self.assertEqual(err, "warn\nobject\n")


class PointTest(Traced):
    def test_a_trace_has_the_place_of_its_caller(self):
        self.run_program("""
            const point = new quor.Point('Net', 'Connect');
            point.info('plain');
            point.warn('to %s', 'host');
            point.error('failed: %d', 5);
            point.trace(quor.WARN | quor.DEVELOPER, 'details');
            assert(new Error('kept').stack.includes('kept'));
            """, QUOR_SETTINGS=EVERYTHING)
        traces = session.traces(self.name, 4)
        self.assertEqual([t["attributes"] for t in traces], [1, 2, 4, 10])
        self.assertEqual([t["text"] for t in traces], ["plain", "to host", "failed: 5", "details"])
        first = self.line("'plain'")
        self.assertEqual([t["line"] for t in traces], list(range(first, first + 4)))
        self.assertEqual({t["file"] for t in traces}, {str(self.path)})

    def test_a_program_may_harden_its_built_ins(self):
        self.run_program("""
            const point = new quor.Point('Net', 'Connect');
            Object.defineProperty(Error, 'prepareStackTrace', { value: undefined, writable: false });
            const { stackTraceLimit } = Error;
            point.info('fixed');
            assert.strictEqual(Error.stackTraceLimit, stackTraceLimit);
            Object.freeze(Error);
            point.info('frozen');
            """, QUOR_SETTINGS=EVERYTHING)
        self.assertEqual(self.texts(2), ["fixed", "frozen"])

    def test_a_module_has_the_path_of_its_file(self):
        path = session.write("module.mjs", """
            import { createRequire } from 'module';
            const quor = createRequire(import.meta.url)('quor');
            new quor.Point('A', 'B').info('from a module');
            """)
        session.run([NODE, path], NODE_PATH=str(BUILD / "bindings/node"), QUOR_SETTINGS=EVERYTHING)
        [trace] = session.traces("module", 1)
        self.assertEqual((trace["file"], trace["line"]), (str(path), 4))

    def test_texts_of_any_kind_arrive(self):
        self.run_program("""
            const point = new quor.Point('Tex\\0te', '\\u4e2d');
            point.info('a\\0b');
            point.info('lone \\ud800');
            point.info('\\u20ac'.repeat(1000000));
            for (const length of [1018, 1019, 1020, 1021, 1022, 1023, 1024, 1025])
              point.info('\\u{1f600}' + 'x'.repeat(length - 8) + '\\u{1f600}');
            point.info(''); point.info(7); point.info({ a: 1 }); point.info('100 %'); point.info();
            const bad = { toString() { throw new Error('no text'); } };
            point.info('given %s', bad);
            point.info('given %s', { toString() { throw { get message() { throw 1; }, toString: null }; } });
            const symbol = Symbol('s');
            point.info('given %s', symbol); point.info(symbol);
            """)
        traces = session.traces(self.name, 20)
        texts = [t["text"] for t in traces]
        self.assertEqual(texts[:2], ["a\\x00b", "lone \ufffd"])
        self.assertEqual(texts[2], "\u20ac" * 21845)
        for length, text in zip(range(1018, 1026), texts[3:11]):
            self.assertEqual(text, "\U0001f600" + "x" * (length - 8) + "\U0001f600")
        self.assertEqual(texts[11:16], ["", "7", "{ a: 1 }", "100 %", "undefined"])
        self.assertEqual(texts[16], "given %s (cannot be formatted: Error: no text)")
        self.assertIn("cannot be formatted: an error that cannot be shown", texts[17])
        self.assertEqual(texts[18:], ["given Symbol(s)", "Symbol(s)"])
        self.assertEqual({(t["component"], t["category"]) for t in traces}, {("Tex\\x00te", "\u4e2d")})

    def test_the_same_names_are_the_same_point(self):
        self.run_program("""
            const point = new quor.Point('Net', 'Connect');
            assert.strictEqual(new quor.Point('Net', 'Connect'), point);
            assert.notStrictEqual(new quor.Point('Net', 'Other'), point);
            for (const names of [[], ['x'], ['x', 5]])
              assert.throws(() => new quor.Point(...names), TypeError);
            assert(point.isOn() && !point.isOn(quor.INFO | quor.DEVELOPER));
            """)

    def test_points_beyond_the_room_are_one_that_says_so(self):
        self.run_program("""
            const stream = new quor.LogStream({ component: 'Many' });
            for (let number = 0; number < 17000; ++number)
              stream.write({ level: 'info', message: 'here', name: `logger${number}` });
            assert.strictEqual(new quor.Point('x', 'y'), new quor.Point('z', 'y'));
            assert.strictEqual(quor.counts().lost, 0);
            """)
        traces = session.traces(self.name, 16383)
        self.assertEqual([t["category"] for t in traces[:10000]], [f"logger{n}" for n in range(10000)])
        rest = [t for t in session.all_traces() if t["category"] == "(no room for more trace points)" and
                t["application"] == self.name]
        wait_for("the rest", lambda: len([t for t in session.all_traces()
                                          if t["application"] == self.name]) >= 17000)
        self.assertIn("[logger16999] here", [t["text"] for t in session.all_traces()])
        self.assertLessEqual(len(rest), 617)

    def test_a_busy_loop_sees_a_switch(self):
        program = self.start_program("""
            const point = new quor.Point('Net', 'Busy');
            point.info('ready');
            let turns = 0;
            while (!point.isOn(quor.INFO | quor.DEVELOPER)) ++turns;
            point.trace(quor.INFO | quor.DEVELOPER, 'switched');
            """)
        self.texts(1)
        status, told = session.machine.ask("trc", "set", self.name, "--all", "Info", "Developer")
        self.assertEqual(status, 0, told)
        program.communicate(timeout=60)
        self.assertEqual(self.texts(2)[1], "switched")


class BlockTest(Traced):
    def test_blocks_end_when_their_function_or_promise_does(self):
        self.run_program("""
            const point = new quor.Point('Net', 'Request');
            const wait = (ms) => new Promise((done) => setTimeout(done, ms));
            assert.strictEqual(quor.block(point, 'call %d', 1, () => 5), 5);
            const end = quor.begin(point, 'elsewhere');
            end.end(); end.end();
            assert.throws(() => quor.block(point, 'no function'), TypeError);
            (async () => {
              assert.strictEqual(await quor.block(point, 'later', async () => { await wait(5); return 6; }), 6);
              await Promise.all([quor.block(point, 'slow', () => wait(50)), quor.block(point, 'fast', () => wait(5))]);
            })();
            """)
        self.assertEqual(self.texts(10), [
            "Begin: call 1", "End: call 1", "Begin: elsewhere", "End: elsewhere", "Begin: later", "End: later",
            "Begin: slow", "Begin: fast", "End: fast", "End: slow"])

    def test_a_value_whose_then_cannot_be_read_is_given_as_it_is(self):
        self.run_program("""
            const point = new quor.Point('Net', 'Request');
            const odd = { get then() { throw new Error('no'); } };
            assert.strictEqual(quor.block(point, 'odd', () => odd), odd);
            let read = 0;
            const once = { get then() { ++read; return (done) => done(7); } };
            quor.block(point, 'once', () => once);
            assert.strictEqual(read, 1);
            """)
        self.assertEqual(self.texts(4), ["Begin: odd", "End: odd", "Begin: once", "End: once"])

    def test_an_exception_ends_the_block_and_is_told_to_developers(self):
        self.run_program("""
            const point = new quor.Point('Net', 'Request');
            const error = new RangeError('no room');
            assert.throws(() => quor.block(point, 'work', () => { throw error; }), error);
            assert.rejects(quor.block(point, 'later', async () => { throw error; }), error);
            """, QUOR_SETTINGS=EVERYTHING)
        traces = session.traces(self.name, 6)
        self.assertEqual([t["text"] for t in traces], [
            "Begin: work", "left by RangeError: no room", "End: work",
            "Begin: later", "left by RangeError: no room", "End: later"])
        self.assertEqual([t["attributes"] for t in traces], [1, 9, 1] * 2)
        self.assertEqual([t["line"] for t in traces], [self.line("'work'")] * 3 + [self.line("'later'")] * 3)


class ProcessTest(Traced):
    def test_a_killed_program_loses_nothing(self):
        self.run_program("""
            const point = new quor.Point('Net', 'Connect');
            for (let number = 0; number < 5000; ++number) point.info('trace %d', number);
            process.kill(process.pid, 'SIGKILL');
            """, status=-9)
        self.assertEqual(self.texts(5000), [f"trace {n}" for n in range(5000)])

    def test_workers_share_points_and_have_names(self):
        self.run_program("""
            const { Worker, isMainThread, workerData } = require('worker_threads');
            if (isMainThread) {
              for (let turn = 0; turn < 6; ++turn) new Worker(__filename, { workerData: turn });
            } else {
              quor.threadName(`worker ${workerData}`);
              for (let number = 0; number < 300; ++number)
                new quor.Point('Shared', String(number)).info('%d', number);
              if (workerData === 5) process.exit(0);
            }
            """)
        traces = session.traces(self.name, 1800)
        self.assertEqual(sorted((t["tid"], int(t["text"])) for t in traces),
                         sorted((f"worker {w}", n) for w in range(6) for n in range(300)))
        self.assertTrue(all(t["text"] == t["category"] for t in traces))

    def test_children_trace_as_processes_of_their_own(self):
        self.run_program("""
            const { fork } = require('child_process');
            new quor.Point('A', 'B').info(String(process.pid));
            if (process.argv[2] !== 'child') fork(__filename, ['child']);
            """)
        traces = session.traces(self.name, 2)
        self.assertEqual([t["text"] for t in traces], [t["pid"] for t in traces])
        self.assertEqual(len({t["pid"] for t in traces}), 2)

    def test_the_name_is_that_of_the_script_unless_one_is_given(self):
        folder = session.folder / "by_folder"
        folder.mkdir()
        (folder / "index.js").write_text(
            "const quor = require('quor'); const point = new quor.Point('A', 'B'); point.info('one');\n"
            "quor.application('later_in_node'); point.info('two');\n")
        session.run([NODE, folder / "index.js"], NODE_PATH=str(BUILD / "bindings/node"))
        self.assertEqual(self.texts(1, "by_folder"), ["one"])
        self.assertEqual(self.texts(1, "later_in_node"), ["two"])

    def test_what_is_kept_for_the_script_holds_from_the_first_trace_on(self):
        status, told = session.machine.ask("trc", "set", "--persist", self.name, "*=developer")
        self.assertEqual(status, 0, told)
        for begin in "", "quor.threadName('x');":
            self.run_program(f"const point = new quor.Point('A', 'B'); {begin}\n"
                             "point.trace(quor.INFO | quor.DEVELOPER, 'first');", QUOR_WAIT="5000")
        self.assertEqual(self.texts(2), ["first", "first"])


class PackageTest(Traced):
    def test_what_is_missing_is_named_with_its_package(self):
        folder = session.folder / "broken"
        folder.mkdir()
        (folder / "libquor.so.1").write_text("")
        _, told = self.run_program("", status=1, LD_LIBRARY_PATH=str(folder))
        self.assertRegex(told, r"Error: quor cannot be loaded: .*libquor\.so\.1.*install the package libquor1")
        copy = session.folder / "unbuilt"
        shutil.copytree(SOURCE, copy, ignore=shutil.ignore_patterns("build"))
        _, told = session.run([NODE, "-e", f"require('{copy}')"], status=1)
        self.assertRegex(told, "quor cannot be loaded: .*build it with `node build.js`")
        empty = {"CPATH": "", "LIBRARY_PATH": "", "PKG_CONFIG_PATH": "", "PKG_CONFIG_LIBDIR": str(copy)}
        _, told = session.run([NODE, copy / "build.js"], status=1, **empty, CC=str(folder / "no-compiler"))
        self.assertIn("install a C compiler", told)

    def test_its_files_are_all_there_and_of_one_version(self):
        package = json.loads((SOURCE / "package.json").read_text())
        numbers = re.findall(r"#define QUOR_VERSION_\w+ (\d+)$", (ROOT / "include/quor/version.h").read_text(), re.M)
        self.assertEqual(package["version"], ".".join(numbers))
        for name in [*package["files"], package["main"], package["types"]]:
            self.assertTrue((SOURCE / name).exists(), name)
        used = re.search(r"set\(files ([^)]*)\)", (ROOT / "tests/bindings/CMakeLists.txt").read_text())[1].split()
        here = {str(path.relative_to(SOURCE)) for path in [*SOURCE.glob("*.*"), *SOURCE.glob("lib/*")]
                if path.is_file()}
        self.assertEqual(set(used), here - {"README.md"})
        declared = set(re.findall(r"^export (?:const|function|class) (\w+)", (SOURCE / "index.d.ts").read_text(), re.M))
        given, _ = session.run([NODE, "-p", "Object.keys(require('quor')).join(' ')"],
                               NODE_PATH=str(BUILD / "bindings/node"))
        self.assertEqual(declared, set(given.split()))

    def test_the_examples_are_those_of_the_page(self):
        """tests/pages runs them."""
        page = (ROOT / "docs/from-your-logger.md").read_text()
        examples = list((SOURCE / "examples").glob("*.js"))
        self.assertEqual(len(examples), 2)
        for example in examples:
            self.assertIn(f"`{example.name}`:\n\n```js\n{example.read_text()}```\n", page)


if __name__ == "__main__":
    BUILD, NODE = Path(sys.argv.pop(1)).resolve(), sys.argv.pop(1)
    unittest.main()
