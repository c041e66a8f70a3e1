#!/usr/bin/env python3
"""Papers written by quillpaper, opened in LibreOffice and read back.

Each paper is converted to PDF with `soffice --headless` and read page by
page with `pdftotext`: what a reader sees is what is checked.
"""
import argparse
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile

QUILLPAPER = None


def run_quillpaper(*args, cwd):
    return subprocess.run([QUILLPAPER, *args], cwd=cwd, capture_output=True, text=True, timeout=120)


class Rendered:
    """A .docx converted to PDF: its pages as text."""

    def __init__(self, docx, workdir):
        profile = os.path.join(workdir, "lo-profile")
        subprocess.run(["soffice", f"-env:UserInstallation=file://{profile}", "--headless",
                        "--convert-to", "pdf", "--outdir", workdir, docx],
                       check=True, capture_output=True, timeout=300)
        self.pdf = os.path.splitext(docx)[0] + ".pdf"
        info = subprocess.run(["pdfinfo", self.pdf], check=True, capture_output=True, text=True).stdout
        self.count = int(re.search(r"Pages:\s+(\d+)", info).group(1))
        self.pages = [self._page(n) for n in range(1, self.count + 1)]

    def _page(self, n):
        out = subprocess.run(["pdftotext", "-f", str(n), "-l", str(n), "-layout", self.pdf, "-"],
                             check=True, capture_output=True, text=True).stdout
        return [line.strip() for line in out.splitlines() if line.strip()]

    def header(self, n):
        """The first line of page n: the running head and the page number."""
        return re.sub(r"\s+", " ", self.pages[n - 1][0])

    def text(self, n):
        return re.sub(r"\s+", " ", " ".join(self.pages[n - 1]))

    def page_of(self, line):
        """The first page with a line that is exactly `line`."""
        for n, page in enumerate(self.pages, 1):
            if line in page:
                return n
        return None


class PaperTest(unittest.TestCase):
    """Papers in the 6th edition, the template's own."""
    papers = {}

    @classmethod
    def setUpClass(cls):
        cls.workdir = tempfile.mkdtemp(prefix="quillpaper-render-")
        cls.make("thesis", "--paper-type=1", "--title=Effects of Sleep on Memory", "--author=Ann Lee",
                 "--college=Yale University")
        cls.make("manuscript", "--paper-type=3", "--title=Sleep and Memory", "--author=Ann Lee",
                 "--affiliation=Yale University", "--second-author=Bo Park",
                 "--second-affiliation=  Brown  University ")
        cls.make("placeholders")
        cls.make("student", "--paper-type=0", "--title=Sleep", "--with=table of contents", "--with=appendix",
                 "--no-hints")

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.workdir, ignore_errors=True)

    EDITION = "--edition=6"

    @classmethod
    def make(cls, name, *options):
        docx = os.path.join(cls.workdir, name + ".docx")
        result = run_quillpaper("new", docx, cls.EDITION, *options, cwd=cls.workdir)
        if result.returncode != 0:
            raise AssertionError(f"quillpaper new failed: {result.stderr}")
        cls.papers[name] = Rendered(docx, cls.workdir)

    # Catches a header without its label on the title page, with it later, or
    # page numbers that do not count up.
    def test_headers_carry_the_running_head_and_count_pages(self):
        for name, title in (("thesis", "EFFECTS OF SLEEP ON MEMORY"), ("manuscript", "SLEEP AND MEMORY")):
            paper = self.papers[name]
            self.assertEqual(paper.header(1), f"Running head: {title} 1", name)
            for n in range(2, paper.count + 1):
                self.assertEqual(paper.header(n), f"{title} {n}", f"{name} page {n}")

    def test_placeholders_fill_an_empty_paper(self):
        paper = self.papers["placeholders"]
        title = "DOUBLE CLICK AND SELECT ME TO ENTER AN ABBREVIATED TITLE"
        self.assertTrue(paper.text(1).startswith(f"Running head: {title}"))
        self.assertIn("WARNING: Your Running head is currently 70 characters long", paper.text(1))
        for placeholder in ("[The title of your paper]", "[The primary author(s) of this paper]",
                            "[Place], [State] [Zipcode]", "E-mail: [name@university.edu]"):
            self.assertIn(placeholder, paper.text(1))
        self.assertTrue(paper.header(2).startswith(title))

    # Catches the page count drifting from what the sections and parts imply:
    # a thesis puts each of its ten parts on a page of its own.
    def test_thesis_pages(self):
        paper = self.papers["thesis"]
        expected = {"Table of Contents": 2, "List of Tables": 3, "List of Figures": 4, "Abstract": 5,
                    "Introduction": 6, "Method": 7, "Results": 8, "Discussion": 9, "References": 10}
        for heading, page in expected.items():
            self.assertEqual(paper.page_of(heading), page, heading)
        self.assertEqual(paper.count, 10)
        title_page = paper.pages[0]
        self.assertEqual(title_page[1:], ["Effects of Sleep on Memory", "Ann Lee", "Yale University"])
        self.assertNotIn("Author Note", paper.text(1))
        self.assertIn("Click here and type your paper. In the Introduction, you should:", paper.text(6))
        # Level 2 headings in title case, as APA sets levels 1 and 2.
        self.assertIn("Participant (Subject) Characteristics", paper.text(7))

    # Catches a generated list that shows nothing, or page numbers that are not
    # where the headings really are.
    def test_generated_lists_show_their_entries_with_true_page_numbers(self):
        for name in ("thesis", "student"):
            paper = self.papers[name]
            toc = paper.page_of("Table of Contents")
            entries = [line for line in paper.pages[toc - 1] if re.search(r"\.{3,}\s*\d+$", line)]
            self.assertGreater(len(entries), 5, name)
            for line in entries:
                heading, page = re.match(r"(.*?)\.{3,}\s*(\d+)$", line).groups()
                self.assertEqual(paper.page_of(heading.strip()), int(page), f"{name}: {line}")
        thesis = self.papers["thesis"]
        # The Introduction's sample captions number nothing and head no list.
        self.assertIn("No tables yet.", thesis.text(3))
        self.assertIn("No figures yet.", thesis.text(4))
        introduction = thesis.text(thesis.page_of("Introduction"))
        self.assertIn("Table 1. [Title of the table]", introduction)
        self.assertIn("Figure 1. [Caption of the figure]", introduction)

    # Catches the manuscript's title page losing its affiliations or author note,
    # and a body that breaks pages where it should run on.
    def test_manuscript_title_page_and_body(self):
        paper = self.papers["manuscript"]
        self.assertEqual(paper.pages[0][1:5], ["Sleep and Memory", "Ann Lee", "Yale University", "Bo Park"])
        text = paper.text(1)
        self.assertIn("Brown University Author Note", text)
        self.assertIn("Ann Lee, Yale University; Bo Park, Brown University.", text)
        self.assertIn("Correspondence concerning this article should be addressed to Ann Lee, Yale University,",
                      text)
        # The author note as APA sets it: indented paragraphs right under the label,
        # sentences kept apart, the e-mail address ending the correspondence paragraph.
        self.assertIn("disclose them here. Identify financial support", text)
        self.assertIn("[Zipcode]. E-mail: [name@university.edu]", text)
        with zipfile.ZipFile(os.path.join(self.workdir, "manuscript.docx")) as z:
            xml = z.read("word/document.xml").decode("utf-8")
        note = xml[xml.index(">Author Note<"):xml.index(">Abstract<")]
        paragraphs = re.findall(r"<w:p>.*?</w:p>", note[note.index("</w:p>") + 6:])
        self.assertRegex(paragraphs[0], r"<w:t[ >]")  # no blank line under the label
        paragraphs = [p for p in paragraphs if re.search(r"<w:t[ >]", p)]
        self.assertEqual(len(paragraphs), 4)
        self.assertTrue(all('<w:pStyle w:val="Paragraph"/>' in p for p in paragraphs))
        self.assertEqual(paper.page_of("Abstract"), 2)
        self.assertEqual(paper.pages[2][1], "Sleep and Memory")  # the title opens the text, not "Introduction"
        self.assertIsNone(paper.page_of("Introduction"))
        self.assertEqual(paper.page_of("Method"), 3)  # runs on from the introduction
        self.assertEqual(paper.page_of("References"), paper.count)

    def test_without_hints(self):
        paper = self.papers["student"]
        whole = " ".join(paper.text(n) for n in range(1, paper.count + 1))
        self.assertNotIn("(APA 2.0", whole)
        self.assertEqual(paper.page_of("Appendix"), paper.count)
        # Its label plain, as the other section labels of the 6th edition.
        with zipfile.ZipFile(os.path.join(self.workdir, "student.docx")) as z:
            xml = z.read("word/document.xml").decode("utf-8")
        for label in ("Appendix", "References"):
            self.assertRegex(xml, r'<w:b w:val="0"/></w:rPr><w:t xml:space="preserve">' + label[:5], label)
        self.assertEqual(paper.pages[0][1:], ["Sleep", "[The primary author(s) of this paper]",
                                              "[The College which grants your degree]"])


class SeventhEditionPaperTest(unittest.TestCase):
    """Papers in the 7th edition: student and professional title pages, the
    running head, the abstract's keywords."""
    papers = {}

    @classmethod
    def setUpClass(cls):
        cls.workdir = tempfile.mkdtemp(prefix="quillpaper-render7-")
        cls.make("student", "--paper-type=0", "--title=Sleep and Memory", "--author=Ann Lee",
                 "--affiliation=Department of Psychology, Yale University", "--course=PSY 101: Memory",
                 "--instructor=Dr. Bo Park", "--due-date=March 3, 2026", "--with=tables", "--with=figures")
        cls.make("thesis", "--paper-type=1", "--title=Sleep and Memory", "--author=Ann Lee",
                 "--college=Yale University")
        cls.make("professional", "--paper-type=3", "--title=Sleep and Memory in Older Adults",
                 "--short-title=Sleep and Memory", "--author=Ann Lee:1", "--author=Bo Park:2",
                 "--author=Cy Diaz:1,2", "--affiliation=Yale University", "--affiliation=Brown University",
                 "--font=Arial")
        cls.make("one-affiliation", "--title=Sleep", "--author=Ann Lee", "--author=Bo Park",
                 "--affiliation=Yale University", "--no-hints", "--with=footnotes", "--with=appendix")
        cls.make("dissertation", "--paper-type=2", "--title=Sleep", "--chapters=2")

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.workdir, ignore_errors=True)

    @classmethod
    def make(cls, name, *options):
        docx = os.path.join(cls.workdir, name + ".docx")
        result = run_quillpaper("new", docx, *options, cwd=cls.workdir)
        if result.returncode != 0:
            raise AssertionError(f"quillpaper new failed: {result.stderr}")
        cls.papers[name] = Rendered(docx, cls.workdir)

    # Catches a running head on a student paper, a label anywhere, or a
    # professional paper's short title missing from a page.
    def test_running_heads(self):
        for name in ("student", "thesis", "dissertation"):
            paper = self.papers[name]
            for n in range(1, paper.count + 1):
                self.assertEqual(paper.header(n), str(n), f"{name} page {n}")
        paper = self.papers["professional"]
        for n in range(1, paper.count + 1):
            self.assertEqual(paper.header(n), f"SLEEP AND MEMORY {n}", f"page {n}")
        for paper in self.papers.values():
            self.assertNotIn("Running head", " ".join(paper.text(n) for n in range(1, paper.count + 1)))

    def test_student_title_page(self):
        self.assertEqual(self.papers["student"].pages[0][1:], [
            "Sleep and Memory", "Ann Lee", "Department of Psychology, Yale University", "PSY 101: Memory",
            "Dr. Bo Park", "March 3, 2026"])
        # Left out, the course, instructor and due date are placeholders; the college stands in for the affiliation.
        self.assertEqual(self.papers["thesis"].pages[0][1:], [
            "Sleep and Memory", "Ann Lee", "Yale University", "[Course number: Course name]",
            "[Instructor's name]", "[Due date]"])

    # Catches affiliations that lose their numbers, or an author note that is
    # not on the title page.
    def test_professional_title_page(self):
        page = self.papers["professional"].pages[0]
        self.assertEqual(page[1], "Sleep and Memory in Older Adults")
        # pdftotext prints the raised numbers as ordinary digits, those that
        # open a line on a line of their own (and not always in order).
        self.assertEqual([line for line in page[2:8] if not line.isdigit()],
                         ["Ann Lee1, Bo Park2, and Cy Diaz1,2", "Yale University", "Brown University", "Author Note"])
        self.assertEqual(sorted(line for line in page[2:8] if line.isdigit()), ["1", "2"])
        text = self.papers["professional"].text(1)
        self.assertIn("Bo Park [https://orcid.org/0000-0000-0000-0000]", text)
        self.assertIn("Correspondence concerning this article should be addressed to Ann Lee, Yale University,",
                      text)
        # The back matter, each on a page of its own with its bold label.
        one = self.papers["one-affiliation"]
        self.assertEqual(one.page_of("Appendix"), one.count)
        self.assertEqual(one.page_of("Footnotes"), one.count - 1)
        dissertation = self.papers["dissertation"]
        self.assertEqual(dissertation.page_of("Table of Contents"), 2)
        self.assertIsNotNone(dissertation.page_of("CHAPTER 2 Click here in main text and type your chapter title"))
        # One affiliation for all: no numbers.
        self.assertEqual(self.papers["one-affiliation"].pages[0][1:4], ["Sleep", "Ann Lee and Bo Park",
                                                                        "Yale University"])

    # Catches the 6th edition's caption line on the tables and figures pages,
    # and hints that send a 7th-edition writer to the 6th edition's sections.
    def test_tables_and_figures_pages_and_hints(self):
        paper = self.papers["student"]
        for kind in ("Table", "Figure"):
            n = paper.page_of(f"{kind} 1")
            self.assertIsNotNone(n, kind)
            page = paper.pages[n - 1]
            self.assertEqual(page[page.index(f"{kind} 1") + 1], f"Sample {kind} Caption")
        for paper in self.papers.values():
            whole = " ".join(paper.text(n) for n in range(1, paper.count + 1))
            self.assertIsNone(re.search(r"APA \d\.\d\d", whole))

    def test_abstract_keywords_and_body(self):
        paper = self.papers["professional"]
        abstract = paper.page_of("Abstract")
        self.assertEqual(abstract, 2)
        self.assertTrue(paper.pages[1][-1].startswith("Keywords: [three to five keywords"), paper.pages[1])
        self.assertEqual(paper.pages[2][1], "Sleep and Memory in Older Adults")
        self.assertEqual(paper.page_of("References"), paper.count)
        # Headings in title case, at every level.
        self.assertIsNotNone(paper.page_of("Sample Size, Power, and Precision"))
        self.assertIsNotNone(paper.page_of("Participant (Subject) Characteristics"))


class TablesTest(unittest.TestCase):
    """The nine statistics tables, each written alone and read back."""

    # A few things a reader must see in each table, markers rendered
    # (pdftotext prints a superscript or subscript as ordinary text).
    EXPECTED = {
        "anova": ["Analysis of Variance for Classical Conditioning", "Source", "η", "Between subjects",
                  "3.27**", "Note. This ANOVA table example", "*p < .05. **p < .01."],
        "correlation": ["Intercorrelations Between Subscales for Students and Older Adults", "Subscale",
                        "Students (n = 200)", "\u2212.34", "Note. This correlation table"],
        "lisrel": ["Factor Loadings and Uniqueness", "Unstandardized factor loading", "SI\u2014Speech Characteristics",
                   "Loud and explosive", "Dashes indicate the standard error was not estimated."],
        "model-comparison": ["Fit Indices for Nested Sequence", "χ2", "χ2diff", "ΔNFI", "443.18*", "3,849.07*",
                             "*p < .05."],
        "multilevel-model": ["Fixed effects", "Random parameters", "(σ2a0)", "(σ2a31)", "Intercept/intercept w0",
                             "\u22122*log likelihood", "38,369.7"],
        "regression": ["Predictors of Self-Reported Moral Behavior", "Self-reported moral behavior", "Model 2",
                       "95% CI", "ΔR2", "ΔF", "3.192**", "*p < .05., **p < .01"],
        "hierarchical-multiple-regression": ["Source of social support and social conflict", "Mother", "Friend",
                                             "β", ".08†", "Control variablesa", "†p < .10. *p < .05."],
        "word": ["Inductively Developed Thematic Categories", "Characteristic Level 3 responses",
                 "Macho privilege", "Note. This word table example is from APA 5.16, pg. 149."],
        "noncanonical": ["Mean Numbers of Correct Responses", "Girls", "Boys", "Verbal tests",
                         "Mathematical tests", "216b", "aNumbers of children out of 20"],
    }
    SIZES = {"anova": (12, 5), "correlation": (11, 5), "lisrel": (19, 4), "model-comparison": (25, 6),
             "multilevel-model": (31, 6), "regression": (15, 5), "hierarchical-multiple-regression": (16, 9),
             "word": (11, 4), "noncanonical": (12, 8)}

    @classmethod
    def setUpClass(cls):
        cls.workdir = tempfile.mkdtemp(prefix="quillpaper-tables-")
        cls.docs = {}
        for kind in cls.EXPECTED:
            path = os.path.join(cls.workdir, kind + ".docx")
            result = run_quillpaper("table", kind, path, cwd=cls.workdir)
            if result.returncode != 0:
                raise AssertionError(result.stderr)
            cls.docs[kind] = path
        profile = os.path.join(cls.workdir, "lo-profile")
        subprocess.run(["soffice", f"-env:UserInstallation=file://{profile}", "--headless", "--convert-to", "pdf",
                        "--outdir", cls.workdir, *cls.docs.values()], check=True, capture_output=True, timeout=600)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.workdir, ignore_errors=True)

    def text(self, kind):
        pdf = os.path.join(self.workdir, kind + ".pdf")
        out = subprocess.run(["pdftotext", "-layout", pdf, "-"], check=True, capture_output=True, text=True).stdout
        return re.sub(r"[ \t]+", " ", out)

    # Catches a marker printed as its code word, a lost note, a caption without its number.
    def test_each_table_reads_as_printed(self):
        for kind, expected in self.EXPECTED.items():
            text = self.text(kind)
            self.assertTrue(text.lstrip().startswith("Table 1"), kind)
            # pdftotext may set a raised character off by a blank: compare without blanks.
            squeezed = re.sub(r"\s+", "", text)
            for snippet in expected:
                self.assertIn(re.sub(r"\s+", "", snippet), squeezed, f"{kind}: {snippet!r}")
            for code in ("chi_squared", "delta_", "sigma_squared", "_dagger_", "|"):
                self.assertNotIn(code, text, f"{kind}: {code}")

    # Catches notes set larger than the table they belong to.
    def test_notes_in_the_size_of_their_table(self):
        small = 0
        for kind, path in self.docs.items():
            with zipfile.ZipFile(path) as z:
                xml = z.read("word/document.xml").decode("utf-8")
            if 'w:val="TableTextSmall"' in xml:
                small += 1
                self.assertNotIn('w:val="TableNote"', xml, kind)
        self.assertGreater(small, 0)

    # Catches a title split where the library breaks it ("Between" / "Subscales").
    def test_a_title_is_one_line(self):
        lines = [line.strip() for line in self.text("correlation").splitlines()]
        self.assertIn("Intercorrelations Between Subscales for Students and Older Adults", lines)

    # Catches figures centred or padded with spaces instead of lined up on
    # their decimal points: within a column every point stands at one place.
    def test_figures_line_up_on_their_decimal_points(self):
        widths = {".": 250, "*": 500, "\u2020": 500, "\u2212": 564}  # Liberation Serif, thousandths of an em
        figure = re.compile(r"^\u2212?\d*\.\d+[*\u2020]*$")
        for kind in ("regression", "multilevel-model", "hierarchical-multiple-regression"):
            pdf = os.path.join(self.workdir, kind + ".pdf")
            boxes = subprocess.run(["pdftotext", "-bbox", pdf, "-"], check=True, capture_output=True,
                                   text=True).stdout
            points = []
            for x_min, x_max, word in re.findall(r'<word xMin="([\d.]+)" yMin="[\d.]+" xMax="([\d.]+)"'
                                                 r' yMax="[\d.]+">([^<]*)</word>', boxes):
                if not figure.match(word):
                    continue
                width = [widths.get(c, 500) for c in word]
                before = sum(width[:word.index(".")])
                points.append(float(x_min) + (float(x_max) - float(x_min)) * before / sum(width))
            self.assertGreater(len(points), 10, kind)
            points.sort()
            columns = [[points[0]]]
            for x in points[1:]:
                if x - columns[-1][-1] > 20:
                    columns.append([])
                columns[-1].append(x)
            for column in columns:
                self.assertLess(max(column) - min(column), 1.0, f"{kind}: points at {column}")

    # Catches a table whose rows or columns differ from what its metadata says.

    def test_rows_and_columns_match_the_metadata(self):
        for kind, (rows, columns) in self.SIZES.items():
            with zipfile.ZipFile(self.docs[kind]) as z:
                xml = z.read("word/document.xml").decode("utf-8")
            self.assertEqual(xml.count("<w:tr>"), rows, kind)
            self.assertEqual(xml.count("<w:gridCol "), columns, kind)

    def test_list_shows_the_nine_buttons_as_people_read_them(self):
        result = run_quillpaper("table", "--list", cwd=self.workdir)
        self.assertEqual(result.returncode, 0)
        self.assertIn("ANOVA (ANalysis Of VAriance)", result.stdout)
        self.assertIn("Report the source, degrees of freedom, and F ratios.", result.stdout)
        self.assertNotIn("&", result.stdout)
        self.assertNotIn("<i>", result.stdout)

    def test_tables_on_the_tables_page_of_a_paper(self):
        path = os.path.join(self.workdir, "with-tables.docx")
        result = run_quillpaper("new", path, "--title=Sleep", "--table=anova", "--table=regression",
                                cwd=self.workdir)
        self.assertEqual(result.returncode, 0, result.stderr)
        paper = Rendered(path, self.workdir)
        first = paper.page_of("Analysis of Variance for Classical Conditioning")
        self.assertIsNotNone(first)
        self.assertEqual(paper.pages[first - 1][1], "Table 1")
        self.assertEqual(paper.page_of("Predictors of Self-Reported Moral Behavior"), first + 1)
        self.assertEqual(paper.pages[first][1], "Table 2")
        self.assertIsNone(paper.page_of("Table 1. Sample table caption."))

    # Catches the sample Tables and Figures pages set as headings (in the
    # contents, missing from their lists) instead of APA's captions.
    def test_sample_table_and_figure_captions(self):
        path = os.path.join(self.workdir, "samples.docx")
        result = run_quillpaper("new", path, "--edition=6", "--paper-type=2", "--with=tables", "--with=figures",
                                "--no-hints", cwd=self.workdir)
        self.assertEqual(result.returncode, 0, result.stderr)
        paper = Rendered(path, self.workdir)
        table = paper.page_of("Table 1")
        self.assertEqual(paper.pages[table - 1][paper.pages[table - 1].index("Table 1") + 1], "Sample table caption")
        figure = paper.page_of("Figure 1. Sample figure caption.")
        self.assertIsNotNone(figure)
        self.assertRegex(paper.text(paper.page_of("List of Tables")), r"Table 1 Sample table caption\.+ ?" + str(table))
        self.assertRegex(paper.text(paper.page_of("List of Figures")),
                         r"Figure 1\. Sample figure caption\.+ ?" + str(figure))
        self.assertNotIn("Sample", paper.text(paper.page_of("Table of Contents")))

    # Catches a thesis whose first table is "Table 2" (after the Introduction's
    # sample caption), or a List of Tables entry without its title.
    def test_a_thesis_numbers_its_tables_from_one(self):
        path = os.path.join(self.workdir, "thesis-tables.docx")
        result = run_quillpaper("new", path, "--edition=6", "--paper-type=2", "--table=correlation",
                                cwd=self.workdir)
        self.assertEqual(result.returncode, 0, result.stderr)
        paper = Rendered(path, self.workdir)
        table = paper.page_of("Table 1")
        self.assertIsNotNone(table)
        self.assertIsNone(paper.page_of("Table 2"))
        listed = paper.text(paper.page_of("List of Tables"))
        self.assertRegex(listed, r"Table 1 Intercorrelations Between Subscales for Students and Older Adults\.+ ?"
                         + str(table))


class DataTablesTest(unittest.TestCase):
    """Tables computed from R's data sets, rendered in LibreOffice: each shows
    R's values (tests/stats/reference.txt) as APA prints them."""

    STATS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "stats")
    # Table name: (arguments, [(reference case, key, how it prints)]).
    CASES = {
        "descriptives-iris": (["descriptives", "--data=iris.csv", "--by=Species", "--columns=Sepal.Length,Petal.Width"],
                              [("descriptives-iris", "mean.0.0", "fixed"), ("descriptives-iris", "sd.2.1", "fixed")]),
        "descriptives-airquality": (["descriptives", "--data=airquality.csv", "--by=Month", "--columns=Ozone,Solar.R"],
                                    [("descriptives-airquality", "mean.1.0", "fixed"),
                                     ("descriptives-airquality", "sd.4.1", "fixed")]),
        "correlation-mtcars": (["correlation", "--data=mtcars.csv", "--columns=mpg,hp,wt,qsec", "--missing=listwise"],
                               [("correlation-mtcars", "r.1.0", "r"), ("correlation-mtcars", "r.3.2", "r"),
                                ("correlation-mtcars", "mean.1", "fixed")]),
        "correlation-airquality": (["correlation", "--data=airquality.csv", "--columns=Ozone,Solar.R,Wind,Temp", "--ci"],
                                   [("correlation-airquality-pairwise", "r.3.2", "r"),
                                    ("correlation-airquality-pairwise", "lower.1.0", "bounded"),
                                    ("correlation-airquality-pairwise", "upper.3.0", "bounded")]),
        "regression-mtcars": (["regression", "--data=mtcars.csv", "--dv=mpg", "--iv=wt,hp", "--block=qsec"],
                              [("regression-mtcars", "b.1.1", "fixed"), ("regression-mtcars", "se.2.3", "fixed"),
                               ("regression-mtcars", "beta.2.1", "bounded"), ("regression-mtcars", "F.2", "fixed"),
                               ("regression-mtcars", "deltaF.2", "fixed"), ("regression-mtcars", "upper.2.0", "fixed")]),
        "regression-iris": (["regression", "--data=iris.csv", "--dv=Sepal.Length", "--iv=Sepal.Width",
                             "--block=Petal.Length,Petal.Width"],
                            [("regression-iris", "b.2.2", "fixed"), ("regression-iris", "t.2.3", "fixed"),
                             ("regression-iris", "r2.2", "bounded")]),
        "anova-toothgrowth": (["anova", "--data=ToothGrowth.csv", "--dv=len", "--between=supp,dose"],
                              [("anova-toothgrowth", "F.1", "fixed"), ("anova-toothgrowth", "eta.2", "bounded"),
                               ("anova-toothgrowth", "mse", "fixed")]),
        "anova-mtcars": (["anova", "--data=mtcars.csv", "--dv=mpg", "--between=cyl,am"],
                         [("anova-mtcars", "F.2", "fixed"), ("anova-mtcars", "p.1", "p")]),
        "ttest-toothgrowth": (["ttest", "--data=ToothGrowth.csv", "--dv=len", "--by=supp"],
                              [("ttest-toothgrowth", "welch.t", "fixed"), ("ttest-toothgrowth", "welch.df", "df"),
                               ("ttest-toothgrowth", "student.t", "fixed"), ("ttest-toothgrowth", "d", "fixed")]),
        "ttest-mtcars": (["ttest", "--data=mtcars.csv", "--dv=mpg", "--by=am"],
                         [("ttest-mtcars", "welch.p", "p"), ("ttest-mtcars", "mean.1", "fixed")]),
    }

    @classmethod
    def setUpClass(cls):
        cls.workdir = tempfile.mkdtemp(prefix="quillpaper-data-tables-")
        cls.reference = {}
        with open(os.path.join(cls.STATS, "reference.txt")) as f:
            for line in f:
                case, key, value = line.split()
                cls.reference[case, key] = float(value)
        paths = []
        for name, (args, _) in cls.CASES.items():
            path = os.path.join(cls.workdir, name + ".docx")
            kind, data, *options = args
            data = "--data=" + os.path.join(cls.STATS, "data", data.split("=", 1)[1])
            result = run_quillpaper("table", kind, path, data, *options, cwd=cls.workdir)
            if result.returncode != 0:
                raise AssertionError(name + ": " + result.stderr)
            paths.append(path)
        profile = os.path.join(cls.workdir, "lo-profile")
        subprocess.run(["soffice", f"-env:UserInstallation=file://{profile}", "--headless", "--convert-to", "pdf",
                        "--outdir", cls.workdir, *paths], check=True, capture_output=True, timeout=600)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.workdir, ignore_errors=True)

    @staticmethod
    def printed(value, how):
        if how == "p" and value < 0.001:
            return "< .001"
        text = f"{value:.1f}" if how == "df" else f"{value:.3f}" if how == "p" else f"{value:.2f}"
        if how in ("r", "bounded", "p"):
            text = text.replace("0.", ".", 1)
        return text.replace("-", "\u2212")

    # Catches a computed value that differs from R's once printed, a table
    # that does not open, or "nan" anywhere.
    def test_each_table_shows_what_r_computes(self):
        for name, (_, expected) in self.CASES.items():
            pdf = os.path.join(self.workdir, name + ".pdf")
            text = subprocess.run(["pdftotext", "-layout", pdf, "-"], check=True, capture_output=True,
                                  text=True).stdout
            self.assertTrue(text.lstrip().startswith("Table 1"), name)
            self.assertNotIn("nan", text.lower().replace("nanc", ""), name)
            for case, key, how in expected:
                self.assertIn(self.printed(self.reference[case, key], how), text, f"{name}: {case} {key}")

    # Catches a data file whose problem is not reported, or a table written anyway.
    def test_bad_data_writes_nothing(self):
        cases = [
            ("y,a\n1,2\n3,4,5\n", ["correlation"], "line 3: 3 fields where the header has 2 columns"),
            ("y,a\n1,2\n3,x\n4,5\n", ["correlation"], 'line 3, column "a": "x" is not a number'),
            ("y,a,b\n1,1,2\n2,2,4\n3,3,6\n4,5,10\n", ["regression", "--dv=y", "--iv=a,b"], "perfectly collinear"),
            ("y,g\n1,a\n2,a\n", ["ttest", "--dv=y", "--by=g"], 'a t test compares two groups; "g" has 1'),
            (",".join(f"x{k}" for k in range(21)) + "\n" + ",".join(str(k) for k in range(21)) + "\n",
             ["correlation"], "a correlation table of 21 columns would not fit a page"),
        ]
        for content, args, message in cases:
            data = os.path.join(self.workdir, "bad.csv")
            with open(data, "w") as f:
                f.write(content)
            out = os.path.join(self.workdir, "bad.docx")
            result = run_quillpaper("table", args[0], out, "--data=" + data, *args[1:], cwd=self.workdir)
            self.assertEqual(result.returncode, 1, result.stderr)
            self.assertIn(message, result.stderr)
            self.assertIn("nothing was written", result.stderr)
            self.assertFalse(os.path.exists(out))

    def test_a_paper_with_a_table_from_data(self):
        path = os.path.join(self.workdir, "paper.docx")
        result = run_quillpaper("new", path, "--edition=6", "--paper-type=2", "--table=correlation", "--table=anova",
                                "--data=" + os.path.join(self.STATS, "data", "mtcars.csv"), "--columns=mpg,hp,wt",
                                "--dv=mpg", "--between=cyl,am", cwd=self.workdir)
        self.assertEqual(result.returncode, 0, result.stderr)
        paper = Rendered(path, self.workdir)
        first = paper.page_of("Means, Standard Deviations, and Correlations")
        self.assertIsNotNone(first)
        self.assertEqual(paper.page_of("Analysis of Variance for mpg"), first + 1)
        listed = paper.text(paper.page_of("List of Tables"))
        self.assertRegex(listed, r"Table 2 Analysis of Variance for mpg\.+ ?" + str(first + 1))


class PageNumbersTest(unittest.TestCase):
    """The page numbers the contents and the lists of tables and figures hold
    as written (LibreOffice prints them without refreshing them), against the
    pages LibreOffice lays the headings and captions out on."""

    SECTIONS = ["--with=table of contents", "--with=list of tables", "--with=list of figures", "--with=abstract",
                "--with=footnotes", "--with=tables", "--with=figures", "--with=appendix"]
    PAPERS = {
        "type0-6": ["--edition=6", "--paper-type=0"],
        "type1-6": ["--edition=6", "--paper-type=1", "--chapters=3"],
        "type2-6": ["--edition=6", "--paper-type=2", "--table=correlation", "--table=anova"],
        "type3-6": ["--edition=6", "--paper-type=3"],
        "type0-7": ["--edition=7", "--paper-type=0"],
        "type3-7": ["--edition=7", "--paper-type=3", "--chapters=2"],
    }

    @classmethod
    def setUpClass(cls):
        cls.workdir = tempfile.mkdtemp(prefix="quillpaper-pages-")

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.workdir, ignore_errors=True)

    @staticmethod
    def page_of(paper, entry):
        """The page the heading or caption of a list entry is on (not a list's own page)."""
        caption = re.match(r"((Table|Figure) \d+)\.? ", entry)
        pages = []
        for n, lines in enumerate(paper.pages, 1):
            if any(re.search(r"\.{3,}\s*\d+$", line) for line in lines):
                continue  # a page of the contents or a list
            if caption:
                # "Table 1" over its title, or "Figure 1. Caption." (the Introduction's samples say "[...]").
                if any(line == caption.group(1) or (line.startswith(caption.group(1) + ".") and "[" not in line)
                       for line in lines):
                    pages.append(n)
            elif entry in lines:
                pages.append(n)
        return pages[-1] if caption and pages else (pages[0] if pages else None)

    # Catches a cached page number that is not where the heading really falls.
    def test_every_listed_page_number_is_true(self):
        for name, options in self.PAPERS.items():
            path = os.path.join(self.workdir, name + ".docx")
            result = run_quillpaper("new", path, "--title=Sleep", *options, *self.SECTIONS, cwd=self.workdir)
            self.assertEqual(result.returncode, 0, result.stderr)
            paper = Rendered(path, self.workdir)
            listed = [re.match(r"(.*?)\.{3,}\s*(\d+)$", line).groups() for page in paper.pages for line in page
                      if re.search(r"\.{3,}\s*\d+$", line)]
            self.assertGreater(len(listed), 15, name)
            for entry, number in listed:
                self.assertEqual(self.page_of(paper, entry.strip()), int(number), f"{name}: {entry}")


class RefsTest(unittest.TestCase):
    """quillpaper refs in each of its forms."""

    ENTRIES = [
        "Zed, A. (2001). Last. Journal of Things, 1, 2–3.",
        "",
        "Abel, B. (2005). A study. Journal of Things, 12(3), 45–67. https://doi.org/10.1037/a0012",
        "just some words",
    ]

    def setUp(self):
        self.workdir = tempfile.mkdtemp(prefix="quillpaper-refs-")
        self.input = os.path.join(self.workdir, "refs.txt")
        with open(self.input, "w", encoding="utf-8") as f:
            f.write("\n".join(self.ENTRIES) + "\n")

    def tearDown(self):
        shutil.rmtree(self.workdir, ignore_errors=True)

    def refs(self, *args):
        return run_quillpaper("refs", self.input, "--edition=6", *args, cwd=self.workdir)

    # Catches an entry dropped silently, or one reported without its line.
    def test_text_keeps_every_entry_and_reports_what_it_cannot_read(self):
        result = self.refs()
        self.assertEqual(result.returncode, 0)
        self.assertEqual(result.stdout.splitlines(), [
            "Zed, A. (2001). Last. Journal of Things, 1, 2–3.",
            "Abel, B. (2005). A study. Journal of Things, 12(3), 45–67. doi:10.1037/a0012",
            "just some words"])
        self.assertIn("line 4: kept as typed", result.stderr)

    def test_html_markdown_and_json(self):
        html = self.refs("--format=html").stdout
        self.assertIn("<i>Journal of Things</i>, <i>12</i>(3)", html)
        self.assertIn("text-indent:-0.5in", html)
        markdown = self.refs("--format=markdown").stdout
        self.assertIn("*Journal of Things*, *12*(3)", markdown)
        lines = [json.loads(line) for line in self.refs("--format=json").stdout.splitlines()]
        self.assertEqual([r["line"] for r in lines], [1, 3, 4])
        self.assertEqual(lines[1]["type"], 1)
        self.assertEqual(lines[1]["fields"]["doi"], "10.1037/a0012")
        self.assertEqual(lines[1]["fields"]["authors"], [{"family": "Abel", "given": "B."}])
        self.assertTrue(lines[2]["problems"])

    # Catches a list out of APA's order, or one without its heading and hanging indent.
    def test_docx_reference_list_in_apa_order(self):
        path = os.path.join(self.workdir, "refs.docx")
        self.assertEqual(self.refs("--format=docx", "--output=" + path).returncode, 0)
        with zipfile.ZipFile(path) as z:
            xml = z.read("word/document.xml").decode("utf-8")
            styles = z.read("word/styles.xml").decode("utf-8")
        self.assertIn('w:hanging="720"', styles)
        self.assertEqual(xml.count('<w:pStyle w:val="Bibliography"/>'), 3)
        # The entries follow the heading, with no empty paragraph between.
        self.assertRegex(xml, r'References</w:t></w:r>(<w:bookmarkEnd[^>]*/>)?</w:p><w:p><w:pPr><w:pStyle '
                              r'w:val="Bibliography"/>')
        paper = Rendered(path, self.workdir)
        lines = paper.pages[0]
        self.assertEqual(lines[0], "References")
        self.assertTrue(lines[1].startswith("Abel, B. (2005)."))
        self.assertTrue(lines[-1].startswith("Zed, A. (2001)") or "Zed, A." in " ".join(lines))
        self.assertLess(" ".join(lines).find("Abel"), " ".join(lines).find("just some words"))
        self.assertLess(" ".join(lines).find("just some words"), " ".join(lines).find("Zed"))
        # The label: not bold in the 6th edition, bold (as the heading style) in the 7th.
        self.assertIn('<w:b w:val="0"/></w:rPr><w:t xml:space="preserve">References', xml)
        path7 = os.path.join(self.workdir, "refs7.docx")
        result = run_quillpaper("refs", self.input, "--format=docx", "--output=" + path7, cwd=self.workdir)
        self.assertEqual(result.returncode, 0, result.stderr)
        with zipfile.ZipFile(path7) as z:
            xml7 = z.read("word/document.xml").decode("utf-8")
        self.assertIn('<w:r><w:t xml:space="preserve">References', xml7)
        self.assertIn("https://doi.org/10.1037/a0012", xml7)


    # Catches a paper that leaves out the list it was given, sorts an edited book
    # by its title, or says only on standard error that an entry was kept as typed.
    def test_the_paper_holds_the_list_in_apa_order(self):
        with open(self.input, "w", encoding="utf-8") as f:
            f.write("\n".join([
                "Zed, A. (2001). Last. Journal of Things, 1, 2–3.",
                "Harley, J. B., & Woodward, D. (Eds.). (1987). Zoo maps. Chicago: University of Chicago Press.",
                "Abel, B. (2005). A study. Journal of Things, 12(3), 45–67.",
                "just some words"]) + "\n")
        for args in (["new", "paper.docx", "--refs=" + self.input], ["refs", self.input, "--format=docx",
                                                                      "--output=paper.docx"]):
            result = run_quillpaper(*args, "--edition=6", cwd=self.workdir)
            self.assertEqual(result.returncode, 0, result.stderr)
            with zipfile.ZipFile(os.path.join(self.workdir, "paper.docx")) as z:
                xml = z.read("word/document.xml").decode("utf-8")
                comments = z.read("word/comments.xml").decode("utf-8")
            at = [xml.find(name) for name in ("Abel, B.", "Harley, J. B.", "just some words", "Zed, A.")]
            self.assertTrue(all(a >= 0 for a in at), args)
            self.assertEqual(at, sorted(at), args)
            self.assertIn("Kept as typed: no date found", comments)


class OutputTest(unittest.TestCase):
    def setUp(self):
        self.workdir = tempfile.mkdtemp(prefix="quillpaper-out-")

    def tearDown(self):
        shutil.rmtree(self.workdir, ignore_errors=True)

    # Catches output that changes from run to run (timestamps, ids).
    def test_same_input_same_bytes(self):
        a, b = (os.path.join(self.workdir, n) for n in ("a.docx", "b.docx"))
        for path in (a, b):
            self.assertEqual(run_quillpaper("new", path, "--title=T", cwd=self.workdir).returncode, 0)
        with open(a, "rb") as fa, open(b, "rb") as fb:
            self.assertEqual(fa.read(), fb.read())
        with zipfile.ZipFile(a) as z:
            self.assertIsNone(z.testzip())

    # Catches a half-written file, or a failure that does not say why.
    def test_errors_say_what_was_wrong_and_write_nothing(self):
        cases = [
            (["new", "x.docx", "--paper-type=7"], "--paper-type must be a whole number from 0 to 3"),
            (["new", "x.docx", "--without=conclusion"], "no section is called 'conclusion'"),
            (["new", "x.docx", "--colour=red"], "unknown option --colour"),
            (["new", "no/such/folder/x.docx"], "cannot write"),
            (["frobnicate"], "unknown command"),
            (["table", "pie-chart"], "no table is called 'pie-chart'"),
            (["new", "x.docx", "--table=pie"], "no table is called 'pie'"),
        ]
        for args, message in cases:
            result = run_quillpaper(*args, cwd=self.workdir)
            self.assertNotEqual(result.returncode, 0, args)
            self.assertIn(message, result.stderr, args)
        self.assertEqual(os.listdir(self.workdir), [])


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--quillpaper", required=True)
    args, rest = parser.parse_known_args()
    QUILLPAPER = os.path.abspath(args.quillpaper)
    unittest.main(argv=[sys.argv[0], *rest])
