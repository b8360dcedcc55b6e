"""The page of figures gets the rows of a run, and nothing else of it changes."""
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.append(str(ROOT / "bench"))
import table  # noqa: E402

ROWS = """\
load 10 M traces / walk of lengths and ids           112.40 ms        floor     101.10   ratio   1.11   target <=  1.20  met
tick                                                 3.77 % of core floor     100.00   ratio   0.04   target <=  0.10  met
a|b                                                    1.00 ns        floor       4.00   ratio   0.25   target <=  0.20  MISSED
submit: median 0.6 ms, worst 3 ms
"""
TABLE = """\
| what is measured / its floor | cost | floor | ratio | target |
|---|---|---|---|---|
| load 10 M traces / walk of lengths and ids | 112.40 ms | 101.10 | **1.11** | 1.20 |
| tick | 3.77 % of core | 100.00 | **0.04** | 0.10 |
| a\\|b | 1.00 ns | 4.00 | **0.25** | 0.20 (missed) |
"""


class Table(unittest.TestCase):
    def test_rows_become_lines_of_a_table_and_the_rest_is_left_out(self):
        self.assertEqual(table.table(ROWS), TABLE)

    def test_a_run_without_rows_is_refused(self):
        with self.assertRaises(ValueError):
            table.table("no such benchmark\n")

    def test_only_the_figures_of_the_page_change(self):
        page = f"before\n{table.BEGIN}old\n{table.END}after\n"
        self.assertEqual(table.written(page, "new\n"), f"before\n{table.BEGIN}new\n{table.END}after\n")
        for bad in ("none", table.END + table.BEGIN, page + page):
            with self.assertRaises(ValueError):
                table.written(bad, "new\n")

    def test_the_page_of_this_project_has_its_place(self):
        page = (ROOT / "docs/benchmarks.md").read_text()
        self.assertNotEqual(table.written(page, "new\n"), page)

    def test_a_loaded_machine_is_told(self):
        self.assertNotIn("not quiet", table.machine(0))
        self.assertIn("not quiet", table.machine(1000))

    def test_the_rows_of_the_benchmarks_are_read(self):
        """The form of bench/ratio.h and bench/python.py: see there."""
        header = (ROOT / "bench/ratio.h").read_text()
        self.assertIn('"%-46s %10.2f %-9s floor %10.2f   ratio %6.2f   target <= %5.2f  %s\\n"', header)
        row = "%-46s %10.2f %-9s floor %10.2f   ratio %6.2f   target <= %5.2f  %s" % (
            "w" * 60, 1234567890.5, "k", 0, 100, 2, "met")
        self.assertEqual(table.ROW.match(row)["cost"], "1234567890.50")


if __name__ == "__main__":
    unittest.main()
