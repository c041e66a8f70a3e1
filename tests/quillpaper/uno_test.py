#!/usr/bin/env python3
"""quillpaper's papers edited as a user edits them in LibreOffice, through its
UNO interface: what the user changes in one place shows everywhere it should.

    uno_test.py --quillpaper build/quillpaper

Needs LibreOffice and python3-uno (Debian's); run it with the system's python3.
"""
import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile

import uno
from com.sun.star.beans import PropertyValue
from com.sun.star.text.ControlCharacter import PARAGRAPH_BREAK

QUILLPAPER = None


def prop(name, value):
    p = PropertyValue()
    p.Name = name
    p.Value = value
    return p


class Office:
    """A headless LibreOffice listening on a pipe of its own."""

    def __init__(self, workdir):
        self.pipe = f"quillpaper{os.getpid()}"
        profile = os.path.join(workdir, "lo-profile")
        self.process = subprocess.Popen(
            ["soffice", f"-env:UserInstallation=file://{profile}", "--headless", "--invisible", "--nodefault",
             "--norestore", "--nologo", f"--accept=pipe,name={self.pipe};urp;"],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        local = uno.getComponentContext()
        resolver = local.ServiceManager.createInstanceWithContext("com.sun.star.bridge.UnoUrlResolver", local)
        for _ in range(120):
            try:
                context = resolver.resolve(f"uno:pipe,name={self.pipe};urp;StarOffice.ComponentContext")
                break
            except Exception:
                time.sleep(0.5)
        else:
            raise RuntimeError("LibreOffice did not start")
        self.desktop = context.ServiceManager.createInstanceWithContext("com.sun.star.frame.Desktop", context)

    def open(self, path):
        return self.desktop.loadComponentFromURL(uno.systemPathToFileUrl(path), "_blank", 0, (prop("Hidden", True),))

    def close(self):
        try:
            self.desktop.terminate()
        except Exception:
            pass
        self.process.wait(timeout=60)


def pdf_pages(pdf):
    info = subprocess.run(["pdfinfo", pdf], check=True, capture_output=True, text=True).stdout
    count = int(next(line.split()[-1] for line in info.splitlines() if line.startswith("Pages:")))
    return [subprocess.run(["pdftotext", "-f", str(n), "-l", str(n), "-layout", pdf, "-"], check=True,
                           capture_output=True, text=True).stdout for n in range(1, count + 1)]


class EditingTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.workdir = tempfile.mkdtemp(prefix="quillpaper-uno-")
        cls.office = Office(cls.workdir)

    @classmethod
    def tearDownClass(cls):
        cls.office.close()
        shutil.rmtree(cls.workdir, ignore_errors=True)

    def paper(self, name, *args):
        path = os.path.join(self.workdir, name + ".docx")
        # (Without hints: LibreOffice 7.4 ends when UNO loads a .docx with comments.)
        done = subprocess.run([QUILLPAPER, "new", path, "--no-hints", *args], capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stderr)
        return path

    def without_comments(self, path):
        """The same paper with its hint comments taken out: LibreOffice 7.4 cannot
        load any .docx with comments through UNO (not even one it wrote itself)."""
        bare = path.replace(".docx", "-bare.docx")
        with zipfile.ZipFile(path) as source, zipfile.ZipFile(bare, "w", zipfile.ZIP_DEFLATED) as target:
            for item in source.infolist():
                data = source.read(item.filename)
                if item.filename == "word/document.xml":
                    text = data.decode()
                    text = re.sub(r"<w:commentRange(?:Start|End) [^>]*/>", "", text)
                    text = re.sub(r"<w:r>(?:(?!</w:r>).)*?<w:commentReference [^>]*/></w:r>", "", text)
                    data = text.encode()
                target.writestr(item, data)
        return bare

    def paragraphs(self, doc):
        found = []
        walk = doc.getText().createEnumeration()
        while walk.hasMoreElements():
            p = walk.nextElement()
            if p.supportsService("com.sun.star.text.Paragraph"):
                found.append((p.getString(), p.ParaStyleName))
        return found

    def save_pdf(self, doc, name):
        pdf = os.path.join(self.workdir, name + ".pdf")
        doc.storeToURL(uno.systemPathToFileUrl(pdf), (prop("FilterName", "writer_pdf_Export"),))
        doc.close(True)
        return pdf_pages(pdf)

    # Catches a running head stored in each header, so that changing it takes
    # as many edits as the paper has sections.
    def test_the_running_head_changes_in_one_place(self):
        doc = self.office.open(self.paper("head", "--edition=6", "--paper-type=2", "--title=Sleep and Memory",
                                          "--short-title=Sleep"))
        doc.getDocumentProperties().getUserDefinedProperties().setPropertyValue("RunningHead", "NAPS AND RECALL")
        doc.getTextFields().refresh()
        pages = self.save_pdf(doc, "head")
        self.assertGreater(len(pages), 5)
        self.assertIn("Running head: NAPS AND RECALL", pages[0])
        for n, page in enumerate(pages[1:], 2):
            self.assertTrue(page.lstrip().startswith("NAPS AND RECALL"), f"page {n}: {page[:80]!r}")


    # Catches a List of Tables that loses its titles once the word processor
    # refreshes it (a caption list takes only the caption's own paragraph).
    def test_a_refreshed_list_of_tables_keeps_the_titles(self):
        doc = self.office.open(self.paper("lists", "--edition=6", "--paper-type=2", "--table=correlation",
                                          "--table=regression"))
        indexes = doc.getDocumentIndexes()
        for k in range(indexes.getCount()):
            indexes.getByIndex(k).update()
        pages = self.save_pdf(doc, "lists")
        listed = next(page for page in pages if "List of Tables" in page)
        self.assertRegex(listed, r"Table 1 Intercorrelations Between Subscales for Students and Older Adults")
        self.assertRegex(listed, r"Table 2 Predictors of Self-Reported Moral Behavior")


    # Catches placeholders that cannot hold what a user types there: a plain-text
    # control is read by LibreOffice as an input field, which holds one line.
    def test_paragraphs_typed_into_a_placeholder_survive(self):
        path = os.path.join(self.workdir, "typed.docx")
        done = subprocess.run([QUILLPAPER, "new", path, "--edition=6", "--paper-type=0"], capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stderr)
        doc = self.office.open(self.without_comments(path))
        search = doc.createSearchDescriptor()
        search.SearchString = "Click here and type your paper."
        hint = doc.findFirst(search)
        self.assertIsNotNone(hint, "no placeholder to type into")
        text = hint.getText()
        cursor = text.createTextCursorByRange(hint)
        cursor.setString("")
        text.insertString(cursor, "Sleep consolidates memory.", False)
        text.insertControlCharacter(cursor, PARAGRAPH_BREAK, False)
        text.insertString(cursor, "Naps help as well.", False)
        saved = os.path.join(self.workdir, "typed-saved.docx")
        doc.storeToURL(uno.systemPathToFileUrl(saved), (prop("FilterName", "MS Word 2007 XML"),))
        doc.close(True)

        doc = self.office.open(saved)
        paragraphs = self.paragraphs(doc)
        doc.close(True)
        texts = [text for text, _ in paragraphs]
        first = texts.index("Sleep consolidates memory.")
        self.assertTrue(texts[first + 1].startswith("Naps help as well."), texts[first:first + 2])
        self.assertEqual(paragraphs[first][1], paragraphs[first + 1][1])
        self.assertFalse(any("Click here and type your paper." in t for t in texts))


def main():
    global QUILLPAPER
    ap = argparse.ArgumentParser()
    ap.add_argument("--quillpaper", required=True)
    args, rest = ap.parse_known_args()
    QUILLPAPER = os.path.abspath(args.quillpaper)
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
