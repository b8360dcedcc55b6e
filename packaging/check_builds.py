#!/usr/bin/env python3
"""Configures and builds what README documents beside the whole: the library alone, and the programs
without the desktop, both with the defences of a release.

`check_builds.py FOLDER CC CXX`: FOLDER is made anew. What a build must not need is hidden from it.
"""
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
COMMON = ["-DCMAKE_BUILD_TYPE=Release", "-DTESSERA_TESTS=OFF", "-DTESSERA_HARDEN=ON",
          "-DCMAKE_UNITY_BUILD=ON", "-DCMAKE_INSTALL_LIBDIR=lib"]
OTHERS = ["OpenSSL", "Protobuf", "SQLite3", "CLI11", "fmt", "nlohmann_json"]
LIBRARY = """lib/cmake/quor/quorConfig.cmake lib/cmake/quor/quorConfigVersion.cmake
    lib/cmake/quor/quorTargets-release.cmake lib/cmake/quor/quorTargets.cmake lib/libquor.a
    lib/libquor.so lib/libquor.so.1 lib/libquor.so.{version} lib/pkgconfig/quor.pc
    share/man/man3/quor.3""".split()


def run(*words):
    done = subprocess.run([str(word) for word in words], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True)
    if done.returncode:
        sys.exit(f"{' '.join(map(str, words))}\n{done.stdout}\nended with {done.returncode}")
    return done.stdout


def configure(build, hidden, *options):
    run("cmake", "-G", "Ninja", "-S", ROOT, "-B", build, f"-DCMAKE_C_COMPILER={sys.argv[2]}",
        f"-DCMAKE_CXX_COMPILER={sys.argv[3]}", *COMMON, *options,
        *(f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in hidden))


def targets(build):
    return {line.partition(":")[0] for line in run("ninja", "-C", build, "-t", "targets", "all").splitlines()}


def library_alone(folder):
    configure(folder / "library", [*OTHERS, "Qt6", "GTest"], "-DTESSERA_QUOR_ONLY=ON")
    run("cmake", "--build", folder / "library")
    prefix = folder / "prefix"
    run("cmake", "--install", folder / "library", "--prefix", prefix)
    installed = {path.relative_to(prefix).as_posix() for path in prefix.rglob("*") if not path.is_dir()}
    real = (prefix / "lib/libquor.so.1").resolve()
    headers = {f"include/quor/{path.name}" for path in (ROOT / "include/quor").glob("*.h*")}
    wanted = headers | {name.format(version=real.name.removeprefix("libquor.so.")) for name in LIBRARY}
    if installed != wanted:
        sys.exit(f"the library alone installs {sorted(installed)}, not {sorted(wanted)}")
    return real


def without_desktop(folder):
    build = folder / "headless"
    configure(build, ["Qt6"], "-DTESSERA_GUI=OFF")
    made = targets(build)
    if not {"trc", "quord", "quor-demo"} <= made or "tessera" in made:
        sys.exit("without the desktop there are to be trc, quord and quor-demo, and no tessera")
    run("cmake", "--build", build, "--target", "quor-demo")
    return build / "bin/quor-demo"


def main():
    folder = Path(sys.argv[1])
    shutil.rmtree(folder, ignore_errors=True)
    made = [library_alone(folder), without_desktop(folder)]
    print(run(sys.executable, ROOT / "packaging/check_hardening.py", *made), end="")
    shutil.rmtree(folder)


if __name__ == "__main__":
    main()
