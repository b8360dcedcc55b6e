#!/usr/bin/env python3
"""The check of the binary interface refuses what breaks programs, and asks for the right version."""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
import check_abi  # noqa: E402

HEADER = """#include "version.h"
struct counts { long traced; };
void quor_get(struct counts* counts);
void quor_name(const char* name);
"""
SOURCE = """#include "quor.h"
void quor_get(struct counts* counts) { counts->traced = 1; }
void quor_name(const char* name) { (void)name; }
"""
ADDED = ("void quor_name", "void quor_new(void);\nvoid quor_name")


class CheckAbi(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        check_abi.HERE = check_abi.HEADERS = self.folder = Path(folder.name)
        check_abi.dump(self.make_library((1, 0, 0), HEADER, SOURCE), self.folder / "libquor-1.0.0.abi")

    def make_library(self, version, header, source):
        numbers = zip(("MAJOR", "MINOR", "PATCH"), version)
        (self.folder / "version.h").write_text(
            "".join(f"#define QUOR_VERSION_{word} {number}\n" for word, number in numbers))
        (self.folder / "quor.h").write_text(header)
        (self.folder / "quor.c").write_text(source)
        made = self.folder / "libquor.so"
        subprocess.run(["cc", "-g", "-shared", "-fPIC", self.folder / "quor.c", "-o", made], check=True)
        return made

    def said(self, version, header=HEADER, source=SOURCE):
        return check_abi.judge(self.make_library(version, header, source)).rpartition("\n")[2]

    def test_the_same_interface_needs_no_version(self):
        self.assertEqual(self.said((1, 0, 0)), "")

    def test_a_new_function_needs_a_minor_version(self):
        header, source = HEADER.replace(*ADDED), SOURCE + "void quor_new(void) {}\n"
        self.assertIn("new minor version", self.said((1, 0, 1), header, source))
        self.assertEqual(self.said((1, 1, 0), header, source), "")

    def test_a_longer_structure_needs_a_major_version(self):
        header = HEADER.replace("long traced;", "long traced; long lost;")
        self.assertIn("new major version", self.said((1, 1, 0), header))
        self.assertEqual(self.said((2, 0, 0), header), "")

    def test_another_type_of_an_argument_needs_a_major_version(self):
        header, source = (text.replace("const char* name", "int name") for text in (HEADER, SOURCE))
        self.assertIn("new major version", self.said((1, 1, 0), header, source))

    def test_a_function_that_is_gone_needs_a_major_version(self):
        header, source = ("\n".join(line for line in text.splitlines() if "quor_name" not in line) + "\n"
                          for text in (HEADER, SOURCE))
        self.assertIn("new major version", self.said((1, 1, 0), header, source))

    def test_a_library_without_debug_information_is_no_answer(self):
        library = self.make_library((1, 0, 0), HEADER, SOURCE)
        subprocess.run(["strip", "-g", library], check=True)
        with self.assertRaises(SystemExit):
            check_abi.judge(library)


if __name__ == "__main__":
    unittest.main()
