#!/usr/bin/env python3
"""The headers of the library with several compilers, versions of the languages and formatting libraries.

usage: headers_test.py INCLUDE_FOLDER SCRATCH_FOLDER

formats.cpp says what formats print. Here stands what does not compile, and why; that each header compiles by
itself; and that sources with different formatting libraries are linked into one program.
"""
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

HERE = Path(__file__).resolve().parent
# Of quor.h, which includes them.
PARTS = ("block.h", "no_traces.h")
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Wconversion", "-Werror"]
COMPILERS = ("g++", "clang++-19")
# What formats specs: the definitions for the compiler, and what is linked.
NOTHING, FMT, STD = (("-DQUOR_NO_STD_FORMAT",), ()), (("-DWITH_FMT",), ("-lfmt",)), (("-DWITH_STD",), ())
FORMATS = (("g++", "17", NOTHING), ("g++", "17", FMT), ("g++", "20", NOTHING), ("g++", "20", FMT),
           ("g++", "2b", NOTHING), ("clang++-19", "17", NOTHING), ("clang++-19", "20", FMT),
           ("clang++-19 -stdlib=libc++", "20", STD))
# What is called, what the compiler says then, and its definitions.
REFUSED = (
    ('QUOR_TRACE_INFO(point, "{} {}", 1)', "this_format_has_more_places_than_arguments", ()),
    ('QUOR_TRACE_INFO(point, "{}", 1, 2)', "this_format_has_more_arguments_than_places", ()),
    ('QUOR_TRACE_INFO(point, "{0}", 1)', "this_format_has_more_arguments_than_places", ()),
    ('QUOR_BLOCK(point, "{} {}", 1)', "this_format_has_more_places_than_arguments", ()),
    ('QUOR_TRACE_INFO(point, "{:.2f}", 1.5)', "a_spec_needs_std_format_or_fmt_included_before_quor",
     ("-DQUOR_NO_STD_FORMAT",)),
    ('QUOR_TRACE_INFO(point, "{:x", 1)', "this_place_has_no_end_or_a_place_inside", ()),
    ('QUOR_TRACE_INFO(point, "{:{}}", 1, 2)', "this_place_has_no_end_or_a_place_inside", ("-DWITH_FMT",)),
    ('QUOR_TRACE_INFO(point, "{:.2f}", 1)', "fmt/", ("-DWITH_FMT",)),
    ('QUOR_TRACE_INFO(point, "{:>5}", Own())', "this_type_takes_no_spec", ("-DWITH_FMT",)),
    ('QUOR_TRACE_INFO(point, "{} {}", 1)', "this_format_has_more_places_than_arguments",
     ("-DQUOR_DISABLE",)),
    ('QUOR_TRACE_INFO(point, "{}", Other())', "write void QuorText", ()),
)
PROGRAM = """
#ifdef WITH_FMT
#include <fmt/format.h>
#endif
#include <quor/quor.hpp>
struct Own {}; struct Other {};
void QuorText(quor::Text& to, Own) { to.Add("own"); }
QUOR_POINT(point, "Net", "Connect");
void Call();
void Call() { %s; }
"""
# Both instantiate the same templates, and the linker keeps one of each name.
WITHOUT = """
#include <quor/quor.hpp>
void Without(quor::Text& to, std::string_view format);
void Without(quor::Text& to, std::string_view format) { quor::FormatTo(to, format, 2.0, 7); }
"""
WITH = """
#include <fmt/format.h>
#include <quor/quor.hpp>
void Without(quor::Text& to, std::string_view format);
int main() {
  quor::detail::TextOf<100> text;
  Without(text, "{:.2f} {:03} ");
  quor::FormatTo(text, std::string_view("{:.2f} {:03}"), 2.0, 7);
  return std::string_view(text.Data(), text.Size()) == "2 7 2.00 007" ? 0 : 1;
}
"""


class Headers:
    def __init__(self, include, scratch):
        self.include, self.scratch = include, Path(scratch)
        self.scratch.mkdir(parents=True, exist_ok=True)
        flags = subprocess.run(["pkg-config", "--cflags", "spdlog", "glib-2.0", "Qt6Core"], capture_output=True,
                               text=True, check=True).stdout.split()
        # Of their headers no warnings are wanted.
        self.loggers = ["-fPIC", *(word.replace("-I", "-isystem", 1) for word in flags)]

    def compile(self, compiler, version, source, *more):
        words = [*compiler.split(), f"-std=c++{version}", *WARNINGS, f"-I{self.include}", str(source), *more]
        ended = subprocess.run(words, capture_output=True, text=True)
        return ended.returncode == 0, " ".join(words) + "\n" + ended.stderr

    def source(self, name, text):
        path = self.scratch / name
        path.write_text(text)
        return path

    def formats(self, number):
        compiler, version, (definitions, libraries) = FORMATS[number]
        program = self.scratch / f"formats-{number}"
        good, told = self.compile(compiler, version, HERE / "formats.cpp", "-O0", "-DQUOR_DISABLE", "-o",
                                  str(program), *definitions, *libraries)
        if not good:
            return told
        ended = subprocess.run([program], capture_output=True, text=True)
        return "" if ended.returncode == 0 else f"{compiler} {version} {definitions}: {ended.stdout}"

    def refused(self, number):
        call, wanted, more = REFUSED[number]
        source = self.source(f"refused-{number}.cpp", PROGRAM % call)
        good, told = self.compile("g++", "20", source, "-fsyntax-only", *more)
        if good or wanted not in told:
            return f"{call} is to be refused with {wanted}:\n{told}"
        # Without what is wrong with it, it compiles; so that is what was refused.
        source = self.source(f"accepted-{number}.cpp", PROGRAM % 'QUOR_TRACE_INFO(point, "{}", Own())')
        good, told = self.compile("g++", "20", source, "-fsyntax-only", *more)
        return "" if good else told

    def by_itself(self, header, compiler):
        language = ["-x", "c++"] if header.suffix == ".hpp" else ["-x", "c"]
        source = self.source(f"{header.name}-{compiler}.x", f'#include "quor/{header.name}"\nextern int some;\n')
        words = [compiler, *language, "-std=c++17" if header.suffix == ".hpp" else "-std=c11", *WARNINGS,
                 f"-I{self.include}", *self.loggers, "-fsyntax-only", str(source)]
        ended = subprocess.run(words, capture_output=True, text=True)
        return "" if ended.returncode == 0 else f"{' '.join(words)}\n{ended.stderr}"

    def linked(self):
        objects = []
        for name, version, text in (("without", "17", WITHOUT), ("with", "20", WITH)):
            source = self.source(f"{name}.cpp", text)
            objects.append(str(source.with_suffix(".o")))
            good, told = self.compile("g++", version, source, "-O0", "-DQUOR_DISABLE", "-c", "-o", objects[-1])
            if not good:
                return told
        for order in (objects, objects[::-1]):
            program = self.scratch / "linked"
            subprocess.run(["g++", *order, "-lfmt", "-o", program], check=True)
            if subprocess.run([program]).returncode != 0:
                return "sources with and without fmt print the same when they are linked"
        return ""


def main():
    headers = Headers(sys.argv[1], sys.argv[2])
    steps = [(headers.formats, number) for number in range(len(FORMATS))]
    steps += [(headers.refused, number) for number in range(len(REFUSED))]
    steps += [(headers.linked,)]
    files = sorted(Path(sys.argv[1]).glob("quor/*.h*"))
    steps += [(headers.by_itself, file, compiler) for file in files if file.name not in PARTS
              for compiler in COMPILERS]
    with ThreadPoolExecutor(2) as pool:
        failures = [told for told in pool.map(lambda step: step[0](*step[1:]), steps) if told]
    print("\n".join(failures) if failures else f"{len(steps)} compilations are as they should be")
    return 1 if failures or not files else 0


if __name__ == "__main__":
    sys.exit(main())
