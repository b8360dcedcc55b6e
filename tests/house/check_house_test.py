"""The laws of the house, each broken once: what is checked has to be found."""
import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "packaging"))
import check_house  # noqa: E402
from long_functions import functions  # noqa: E402

RULES = """tessera_room(base LINK Threads::Threads)
tessera_room(records DEPENDS base LINK x)
tessera_room(docview DEPENDS base)
tessera_face(docview
             DEPENDS docview records)
"""
ROOMS = check_house.rooms_in_order(RULES)


def source(name, text):
    return check_house.Source(name, text, ROOMS)


def lengths(text):
    return [(line, length) for line, length, _ in functions(text)]


class Functions(unittest.TestCase):
    def test_are_measured_from_their_head_to_their_end(self):
        self.assertEqual(lengths("int F() {\n  return 1;\n}\n"), [(1, 3)])
        self.assertEqual(lengths("\nvoid Long(int a,\n          int b) {\n}\n"), [(2, 3)])

    def test_end_at_their_own_brace(self):
        text = "void F() {\n  if (a) {\n    g([] {\n    });\n  }\n}\nint b;\nvoid G() {}\n"
        self.assertEqual(lengths(text), [(1, 6), (8, 1)])

    def test_with_initializers_begin_at_their_head(self):
        text = "C::C(int a)\n    : m_a{a},\n      m_b(B{1}) {\n  Go();\n}\n"
        self.assertEqual(lengths(text), [(1, 5)])

    def test_in_classes_and_namespaces_are_found(self):
        text = "namespace a {\nclass B final : public C {\n public:\n  int D() const {\n    return 1;\n  }\n};\n}\n"
        self.assertEqual(lengths(text), [(4, 3)])

    def test_are_not_lists_classes_or_words_in_texts(self):
        text = 'const int k[] = {1,\n2};\nstruct S {\n  int a = 1;\n};\nconst char* t = "f() {";\n// g() {\n'
        self.assertEqual(lengths(text), [])

    def test_after_a_preprocessor_line_are_found(self):
        self.assertEqual(lengths("#define A(x) {\nvoid F() {\n}\n"), [(2, 2)])


class Sizes(unittest.TestCase):
    def found(self, name, text):
        return list(check_house.sizes(source(name, text)))

    def test_a_function_of_forty_lines_stands_and_one_more_does_not(self):
        text = "void F() {\n" + "  a();\n" * 38 + "}\n"
        self.assertEqual(self.found("src/base/a.cpp", text), [])
        more = text.replace("}\n", "  a();\n}\n")
        self.assertEqual(self.found("src/base/a.cpp", more),
                         ["src/base/a.cpp:1: voidF() has 41 lines, 40 at most"])

    def test_a_file_has_its_limit(self):
        self.assertEqual(self.found("src/base/a.h", "\n" * 120), [])
        self.assertEqual(len(self.found("src/base/a.h", "\n" * 121)), 1)

    def test_a_room_has_its_limit(self):
        half = source("src/base/a.cpp", "int a;\n\n  // why\n" * (check_house.ROOM_LIMIT // 2))
        self.assertEqual(list(check_house.room_sizes([half, half], ROOMS)), [])
        self.assertEqual(len(list(check_house.room_sizes([half, half, half], ROOMS))), 1)


class TypeNames(unittest.TestCase):
    def found(self, *files):
        return list(check_house.names_twice([source(name, text) for name, text in files]))

    def test_two_types_of_one_program_have_two_names(self):
        one = ("src/base/a.h", "struct A;\n\nclass A final : public B {\n  struct C {};\n};\n")
        for other in ("struct A {};\n", "template <class T>\nstruct A {};\n", "enum class A : int { B };\n",
                      "class [[nodiscard]] A {\n};\n"):
            self.assertEqual(self.found(one, ("src/records/b.cpp", other)),
                             ["src/records/b.cpp:1: A is also the name of a type in src/base/a.h:3"])
            self.assertEqual(len(self.found(("apps/trc/b.cpp", other), one)), 1)

    def test_what_others_cannot_see_may_have_any_name(self):
        one = ("src/base/a.h", "struct A {\n  struct C {};\n};\n")
        for other in ("namespace {\nstruct A {};\n}\n", "namespace other {\nstruct A {};\n}\n",
                      "struct A::C {};\n", "struct C {};\n", "template <class A>\nstruct B {};\n", "struct A;\n",
                      "void F() {\n  struct A {};\n}\n", "// struct A {};\n",
                      "template <>\nstruct A<int> {};\n"):
            self.assertEqual(self.found(one, ("src/records/b.cpp", other)), [], other)

    def test_two_programs_may_share_a_name(self):
        text = "struct A {};\n"
        self.assertEqual(self.found(("apps/trc/a.cpp", text), ("apps/quord/a.cpp", text)), [])
        self.assertEqual(len(self.found(("apps/trc/a.cpp", text), ("apps/trc/b.cpp", text))), 1)


class Includes(unittest.TestCase):
    def found(self, name, text):
        return list(check_house.strange_includes(source(name, text), ROOMS))

    def test_a_room_names_what_it_includes(self):
        self.assertEqual(self.found("src/records/a.h", '#include "base/b.h"\n#include "c.h"\n'), [])
        self.assertEqual(self.found("src/docview/a.h", '\n#include "records/b.h"\n'),
                         ["src/docview/a.h:2: docview includes records and does not name it"])
        # What it reaches through another it has to name all the same.
        self.assertEqual(len(self.found("src/docview/ui/a.cpp", '#include "base/b.h"\n')), 1)

    def test_a_room_includes_what_it_names(self):
        sources = [source("src/records/a.h", '#include "base/b.h"\n'),
                   source("src/docview/ui/a.h", '#include "docview/b.h"\n#include "records/b.h"\n')]
        self.assertEqual(list(check_house.order(sources, ROOMS)),
                         ["src/CMakeLists.txt:1: docview names base and does not include it"])

    def test_a_room_stands_after_those_that_it_names(self):
        rooms = check_house.rooms_in_order("tessera_room(a DEPENDS b)\ntessera_room(b)\n")
        self.assertEqual(list(check_house.order([], rooms)),
                         ["src/CMakeLists.txt:1: a depends on b, which is not before it"])

    def test_qt_stays_in_faces(self):
        self.assertEqual(self.found("src/docview/ui/a.h", "#include <QString>\n"), [])
        for name in ("src/docview/a.h", "apps/trc/a.cpp", "apps/shots/a.cpp"):
            self.assertEqual(len(self.found(name, "#include <QString>\n")), 1, name)
        self.assertEqual(self.found("apps/shots/ui/a.cpp", "#include <QString>\n"), [])

    def test_a_circle_is_found(self):
        sources = [source("src/base/a.h", '#include "base/b.h"\n'),
                   source("src/base/b.h", '#include "base/a.h"\n')]
        self.assertEqual(len(list(check_house.circles(sources))), 1)
        self.assertEqual(list(check_house.circles(sources[:1])), [])


class Comments(unittest.TestCase):
    def test_a_torn_word_is_found(self):
        torn = source("src/base/a.h", "// one\n//    two\n")
        self.assertEqual(len(list(check_house.torn_comments(torn))), 1)


if __name__ == "__main__":
    unittest.main()
