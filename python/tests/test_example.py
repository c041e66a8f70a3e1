"""The paper-outline example, run as a user runs it."""

import re
import subprocess
import sys
import unittest
from pathlib import Path

EXAMPLE = Path(__file__).resolve().parent.parent / "examples" / "paper_outline.py"


def outline(*args):
    run = subprocess.run([sys.executable, str(EXAMPLE), *args], capture_output=True, text=True, check=False)
    if run.returncode != 0:
        raise AssertionError(f"the example failed ({run.returncode}):\n{run.stderr}")
    return run.stdout.splitlines()


def pages(lines):
    """Page number and caption of each page, in order."""
    return [(int(m[1]), m[2]) for m in (re.match(r"  Page (\d+): (.*)", line) for line in lines) if m]


def page(lines, caption):
    """The lines written on the page with that caption."""
    start = next(i for i, line in enumerate(lines) if re.match(rf"  Page \d+: {re.escape(caption)}$", line))
    body = []
    for line in lines[start + 1:]:
        if not line.startswith("    ") and line:
            break
        body.append(line.strip())
    return body


class PaperOutlineTest(unittest.TestCase):
    def test_manuscript_with_its_default_parts(self):
        lines = outline("--title", "Sleep and Memory", "--author", "Ada Lovelace", "--affiliation", "Analytical College")
        self.assertEqual(lines[0], "Paper: Sleep and Memory (manuscript for publication)")
        self.assertEqual([caption for _, caption in pages(lines)],
                         ["Title Page", "Abstract", "Body of the paper", "Introduction", "Method", "Results",
                          "Discussion", "References"])
        self.assertEqual([n for n, _ in pages(lines)], list(range(1, 9)))
        self.assertIn("Section (header: Running head: SLEEP AND MEMORY)", lines)
        self.assertIn("Section (header: SLEEP AND MEMORY)", lines)

        title = page(lines, "Title Page")
        for field in ("Front Matter: Sleep and Memory", "Front Matter: Ada Lovelace",
                      "Front Matter: Analytical College", "Front Matter: Author Note"):
            self.assertIn(field, title)
        self.assertTrue(any(line.startswith("Normal: Correspondence concerning this article") for line in title))

        self.assertEqual(page(lines, "Abstract")[0], "Heading 1: **Abstract**")
        method = page(lines, "Method")
        self.assertTrue(method[1].startswith("## Method  -- "), method[:3])
        self.assertIn("Heading 2: Participant (subject) characteristics", method)
        self.assertIn("(bookmark References)", page(lines, "References"))

    def test_dissertation_with_every_part(self):
        lines = outline("--paper-type", "2", "--all-parts")
        captions = [caption for _, caption in pages(lines)]
        self.assertEqual(captions[:5], ["Title Page", "Table of Contents", "List of Tables", "List of Figures",
                                        "Abstract"])
        self.assertEqual(captions[-4:], ["Footnotes", "Tables", "Figures", "Appendix"])
        self.assertEqual(page(lines, "Table of Contents"), ["== Table of Contents ==", "(list field, kind 0)"])
        self.assertIn("Front Matter: [[The College which grants your degree]]", page(lines, "Title Page"))

    def test_every_paper_type_lays_out_without_errors(self):
        for paper_type, name in enumerate(["undergraduate paper", "master's thesis", "doctoral dissertation",
                                           "manuscript for publication"]):
            with self.subTest(name):
                lines = outline("--paper-type", str(paper_type))
                self.assertTrue(lines[0].endswith(f"({name})"))
                captions = [caption for _, caption in pages(lines)]
                self.assertEqual((captions[0], captions[-1]), ("Title Page", "References"))
                self.assertIn("Method", captions)

    def test_without_hints(self):
        lines = outline("--no-hints")
        self.assertIn("## Method", page(lines, "Method"))


if __name__ == "__main__":
    unittest.main()
