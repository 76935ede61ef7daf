# SPDX-License-Identifier: MIT
"""The tables of ./run bench, made in small from the real programs: check_tables.py BENCH_CHILD KESTREL."""
import contextlib
import io
import pathlib
import shlex
import sys
import tempfile
import unittest
import unittest.mock

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "bench" / "conduct"))
import conduct  # noqa: E402
import sections  # noqa: E402
import tables  # noqa: E402
import timing  # noqa: E402

PROGRAMS = {}
DOCUMENT = """# Performance

Text before.

{begin}
old
| table |
{end}

Text after.
"""

# A child in the place of another program: it knows two jobs and answers fixed times.
PEER = """
import sys
items = "item\\t0\\tneon\\tdefault\\tfast\\nitem\\t1\\tneon\\tdefault\\t~faster\\nend"
for line in sys.stdin:
    words = line.split()
    if words[0] == "quit":
        break
    times = {"0": "ms 0.5", "1": "ms 0.000001"}
    time = times.get(words[1]) if words[0] == "run" else ""
    print({"frame": "ok", "list": items, "run": time}.get(words[0], "no"), flush=True)
"""


def document_for(name, text=DOCUMENT):
    begin, end = sections.markers(name)
    return text.format(begin=begin, end=end)


def section_of(text, name):
    begin, end = sections.markers(name)
    return text.split(begin)[1].split(end)[0]


class Sections(unittest.TestCase):
    def test_the_whole_section_is_replaced_and_nothing_else(self):
        text = sections.replaced(document_for("growth"), "growth", "| new |\n")
        begin, end = sections.markers("growth")
        self.assertEqual(text, f"# Performance\n\nText before.\n\n{begin}\n\n| new |\n\n{end}\n\nText after.\n")
        self.assertEqual(sections.replaced(text, "growth", "| new |"), text)

    def test_a_document_without_the_place_is_refused_with_what_to_do(self):
        begin, end = sections.markers("jobs")
        for text in ("", begin, end + begin, begin + end + begin + end):
            with self.assertRaises(sections.NoSection) as refused:
                sections.replaced(text, "jobs", "new")
            self.assertIn(f'Put the lines "{begin}" and "{end}"', str(refused.exception))

    def test_a_refused_document_stays_as_it_was(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "document.md"
            path.write_text("no place\n")
            with self.assertRaises(sections.NoSection):
                sections.write(path, "jobs", "new")
            self.assertEqual([entry.name for entry in pathlib.Path(folder).iterdir()], ["document.md"])
            self.assertEqual(path.read_text(), "no place\n")

    def test_the_project_s_document_has_a_place_for_every_section(self):
        text = (ROOT / "docs" / "performance.md").read_text(encoding="utf-8")
        for name in conduct.SECTIONS:
            self.assertIn("| new |", sections.replaced(text, name, "| new |"))


class Figures(unittest.TestCase):
    def test_numbers_have_three_digits(self):
        shown = [tables.number(value) for value in (0.01234, 1.234, 12.34, 123.4, None, float("nan"))]
        self.assertEqual(shown, ["0.012", "1.23", "12.3", "123", "–", "–"])

    def test_means_are_geometric_and_leave_out_what_is_missing(self):
        self.assertAlmostEqual(tables.mean_of([2, 8, float("nan"), tables.ratio(None, 1), tables.ratio(1, None)]), 4)


class Turns(unittest.TestCase):
    def test_the_first_run_does_not_count_and_the_least_of_the_others_does(self):
        times = iter([1, 5, 3, 4])
        cell = timing.Cell(lambda: next(times, None), 1e9)
        timing.warm(cell)
        timing.take_turns([cell], lambda: None)
        self.assertEqual((cell.least, cell.runs, cell.gone), (3, 3, True))

    def test_a_first_run_beyond_the_patience_counts_and_stays_the_only_one(self):
        cell = timing.Cell(lambda: 7.0, -1)
        timing.warm(cell)
        timing.take_turns([cell], lambda: None)
        self.assertEqual((cell.least, cell.runs), (7.0, 1))

    def test_programs_take_turns(self):
        order = []

        def run(name):
            order.append(name)
            return 0.0 if len(order) < 4000 else None
        cells = [timing.Cell(lambda name=name: run(name), 1e9) for name in "ab"]
        for cell in cells:
            timing.warm(cell)
        with unittest.mock.patch.object(timing, "BURST_MS", 0):
            timing.take_turns(cells, lambda: None)
        self.assertEqual(order[:6], ["a", "b", "a", "b", "a", "b"])


class WholeRuns(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="kfx bench ")))
        self.document = self.folder / "document.md"

    def run_bench(self, section, *words):
        self.document.write_text(document_for(section), encoding="utf-8")
        growth = self.folder / "growth"
        growth.write_text("print('| sides |\\n| ---: |\\n| 16 |')")
        preview = self.folder / "preview"
        preview.write_text("import sys\nprint('Neon\\t' + sys.argv[1] + '.26\\nBump\\t' + sys.argv[2])")
        peer = self.folder / "peer.py"
        peer.write_text(PEER)
        child = shlex.quote(PROGRAMS["child"])
        out, errors = io.StringIO(), io.StringIO()
        python = shlex.quote(sys.executable)
        with contextlib.redirect_stdout(out), contextlib.redirect_stderr(errors):
            status = conduct.main([
                section, "--quick", "--patience", "2", "--size", "24x18", "--document", str(self.document),
                "--native", child,
                "--reference", child + " --reference", "--kestrel", shlex.quote(PROGRAMS["kestrel"]),
                "--growth", f"{python} {shlex.quote(str(growth))}", "--no-peers",
                "--preview", f"{python} {shlex.quote(str(preview))}",
                "--child", f"peer={python} {shlex.quote(str(peer))}", *words])
        return status, out.getvalue(), errors.getvalue()

    def rows(self, text):
        return [[cell.strip() for cell in line.strip("|").split("|")] for line in text.splitlines() if line[:1] == "|"]

    def test_the_table_of_jobs_is_written_between_the_comments(self):
        status, out, errors = self.run_bench("jobs")
        self.assertEqual(status, 0, errors)
        text = self.document.read_text(encoding="utf-8")
        self.assertTrue(text.startswith("# Performance\n\nText before.\n") and text.endswith("\nText after.\n"))
        self.assertNotIn("old", text)
        section = section_of(text, "jobs")
        self.assertIn(section.strip(), out)
        self.assertIn("A quick run", section)
        self.assertIn("Peers that were installed: peer.", section)
        rows = {(row[0], row[1]): row for row in self.rows(section)}
        for size in ("24 x 18", "48 x 36"):
            neon = rows["Neon", size]
            self.assertNotEqual(neon[2], "–")
            self.assertEqual(neon[5:7], ["peer: fast", "0.500"])  # and not the one that does less
            # Both are rounded to three digits.
            self.assertAlmostEqual(float(neon[7]), float(neon[2]) / 0.5, delta=0.02 * max(1, float(neon[7])))
            self.assertNotEqual(rows["Swirl 1485, a later frame", size][2], "–")
            self.assertNotEqual(rows["quantize: one palette of 256 colours for all frames", size][2], "–")
        self.assertNotEqual(rows["Neon", "24 x 18"][4], "–")

    def test_a_choice_of_jobs_is_only_printed(self):
        status, out, errors = self.run_bench("jobs", "--only", "neon")
        self.assertEqual(status, 0, errors)
        self.assertEqual([row[0] for row in self.rows(out)[2:]], ["Neon", "Neon"])
        self.assertIn("old", self.document.read_text(encoding="utf-8"))

    def test_growth_is_what_its_program_prints(self):
        status, _, errors = self.run_bench("growth")
        self.assertEqual(status, 0, errors)
        self.assertIn("| 16 |", section_of(self.document.read_text(encoding="utf-8"), "growth"))

    def test_previews_are_what_their_program_tells_of_both_sizes(self):
        status, out, errors = self.run_bench("previews")
        self.assertEqual(status, 0, errors)
        rows = self.rows(section_of(self.document.read_text(encoding="utf-8"), "previews"))
        self.assertEqual(rows[0], ["effect", "24 x 18, ms", "48 x 36, ms"])
        self.assertEqual(rows[2:], [["Neon", "24.3", "48.3"], ["Bump", "18.0", "36.0"]])

    def test_threads_time_the_command_line(self):
        status, out, errors = self.run_bench("threads", "--only", "neon")
        self.assertEqual(status, 0, errors)
        self.assertEqual([row[0] for row in self.rows(out)[2:]], ["Neon"])

    def test_a_document_without_the_place_is_told_in_a_sentence(self):
        status, _, errors = self.run_bench("growth", "--document", __file__)
        self.assertEqual(status, 1)
        self.assertIn("bench: Put the lines", errors)

    def test_a_child_that_does_not_answer_is_left_out(self):
        status, out, errors = self.run_bench("jobs", "--only", "neon", "--child", "broken=true")
        self.assertEqual(status, 0, errors)
        self.assertIn("broken is left out", errors)
        self.assertIn("Peers that were installed: peer.", out)


if __name__ == "__main__":
    PROGRAMS["child"], PROGRAMS["kestrel"] = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1], verbosity=2)
