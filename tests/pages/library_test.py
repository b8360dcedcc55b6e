"""What headers and pages show of the library's calls compiles, runs and traces."""
import re
import subprocess


def comment_of_cpp(text):
    """The example in the comment on top of quor.hpp: declarations, then statements behind "..."."""
    lines = [line[2:].strip() for line in text.splitlines() if re.match(r"//   \S", line)]
    lines = lines[:next(i for i, line in enumerate(lines) if "QUOR_BLOCK" in line) + 1]
    middle = lines.index("...")
    return lines[:middle], lines[middle + 1:]


def made_by(call):
    """How many traces it makes where no service has set anything: details are off then."""
    if "QUOR_DEVELOPER" in call:
        return 0
    return 2 if "QUOR_BLOCK" in call else int("trace(" in call or "QUOR_TRACE" in call)


def body(statements):
    """The rest of main(): its exit status is the number of traces that the statements made."""
    return ["{", *statements, "}", "quor_counts counts; quor_get_counts(&counts);",
            "return (int)counts.traced;", "}"]


def programs(root, calls):
    """By name, each with the number of traces that it makes."""
    declarations, statements = comment_of_cpp((root / "include/quor/quor.hpp").read_text())
    point = re.search(r"Declares a point at file scope: (QUOR_POINT\(.*\);)",
                      (root / "include/quor/quor.h").read_text())[1]
    point_c = re.search(r"\((\w+),", point)[1]
    called = [call.replace("...", '"a text"') + ";" for call in calls]
    assert len(called) >= 4, f"the page names calls: {calls}"
    return {
        "comment.cpp": (sum(map(made_by, statements)), [
            "#include <quor/quor.hpp>", *declarations, "int main() {",
            'const char* const host = "db"; const double ms = 1.5; const int id = 7;', *body(statements)]),
        "calls.cpp": (sum(map(made_by, called)), [
            "#include <quor/quor.hpp>", 'QUOR_POINT(point, "Net", "Connect");', "int main() {",
            'const char text[] = "ready"; const size_t length = 5;', *body(called)]),
        "point.c": (1, [
            "#include <quor/quor.h>", point, "int main(void) {",
            *body([f'QUOR_TRACE_INFO({point_c}, "up");'])]),
    }


def check_library(folder, build, root, calls):
    failures = []
    folder.mkdir()
    for name, (traces, lines) in programs(root, calls).items():
        text = "\n".join(lines)
        source, program = folder / name, folder / name.replace(".", "-")
        source.write_text(text)
        compiler = ["cc", "-std=c11"] if name.endswith(".c") else ["c++", "-std=c++17"]
        made = subprocess.run(
            [*compiler, "-Wall", "-Wextra", "-Werror", "-Wno-unused-variable", f"-I{root}/include",
             source, f"{build}/packaging/quor/libquor.so", f"-Wl,-rpath,{build}/packaging/quor", "-o",
             program], capture_output=True, text=True)
        if made.returncode != 0:
            failures.append(f"{name}:\n{text}\n{made.stderr}")
            continue
        ended = subprocess.run([program], env={"QUOR_AUTOSTART": "0", "QUOR_SOCKET": f"{folder}/none"})
        if ended.returncode != traces:
            failures.append(f"{name} made {ended.returncode} traces and not {traces}")
    return failures
