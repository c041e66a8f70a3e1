#!/usr/bin/env python3
"""Lays out the skeleton of an APA paper with QuillFormatAPA, from Python.

The document builder below is a plain Python object: the library calls its
members late-bound (AddSection, addPage, addStyle, addText, ...), and it keeps
what it is asked for, page by page, to print as a readable outline.

    python3 paper_outline.py --paper-type 3 --title "Sleep and Memory" \\
        --author "Ada Lovelace" --affiliation "Analytical College"
"""

import argparse
import sys

import quillformatapa as qfa

PAPER_TYPES = ["undergraduate paper", "master's thesis", "doctoral dissertation", "manuscript for publication"]
STYLE_NAMES = {"-1": "Normal", "-2": "Heading 1", "-3": "Heading 2"}


class SettingsDictionary:
    """The template's settings dictionary: `Item` holds the values."""

    def __init__(self):
        self.Item = {}

    def Exists(self, key):
        return key in self.Item

    def Add(self, key, value):
        if key in self.Item:
            raise qfa.AutomationError(457, "This key is already associated with an element of this collection")
        self.Item[key] = value


class Page:
    """One page: what the library writes on it, paragraph by paragraph."""

    def __init__(self, part):
        self.part = part
        self.lines = []
        self._style = STYLE_NAMES["-1"]
        self._paragraph = []
        self._bookmarks = []

    def _end_paragraph(self):
        if self._paragraph:
            text = "".join(self._paragraph).replace("****", "").strip()
            self.lines.append(f"{self._style}: {text}" if text else "")
            self._paragraph = []
        self.lines.extend(f"(bookmark {name})" for name in self._bookmarks)
        self._bookmarks = []

    def _line(self, text):
        self._end_paragraph()
        self.lines.append(text)

    def addStyle(self, name):
        self._end_paragraph()
        self._style = STYLE_NAMES.get(name, name)

    def addText(self, text):
        pieces = text.replace("\n", "\r").split("\r")
        for i, piece in enumerate(pieces):
            if i:
                self._end_paragraph()
            self._paragraph.append(piece)

    def addTextToggleBold(self, text):
        pieces = text.replace("\n", "\r").split("\r")
        self.addText("\r".join(f"**{piece}**" if piece else "" for piece in pieces))

    def addCarriageReturns(self, count):
        if self._paragraph:
            self._end_paragraph()
            count -= 1
        self.lines.extend([""] * count)

    def addEditingHint(self, id):  # noqa: A002 - the template's parameter name
        self._line(f"(editing hint {id})")

    def addOneClick(self, text):
        self._paragraph.append(f"[{text}]")

    def addBookmark(self, name):
        self._bookmarks.append(name)

    def suppressPageBreak(self):
        self._line("(runs on from the page before)")

    def AddCenteredParagraph(self, text, partHeading=False):
        self._line(f"== {text} ==" if partHeading else f"Centered: {text}")

    def addTOC(self, kind):
        self._line(f"(list field, kind {kind})")

    def AddCaption(self, kind):
        self._line(f"({kind} caption)")

    def AddSection(self, heading, hint, outputTemplate=True):
        self._line(f"## {heading}" + (f"  -- {hint}" if hint and outputTemplate else ""))

    def finish(self):
        """The page's lines, blank runs folded into one blank line."""
        self._end_paragraph()
        folded = []
        for line in self.lines:
            if line or (folded and folded[-1]):
                folded.append(line)
        while folded and not folded[-1]:
            folded.pop()
        return folded


class Section:
    def __init__(self, first_part, last_part, header):
        self.first_part = first_part
        self.last_part = last_part
        self.header = header
        self.pages = []

    def addPage(self):
        # Pages follow the section's parts in order, one part per page.
        self.pages.append(Page(self.first_part + len(self.pages)))
        return self.pages[-1]


class DocumentBuilder:
    """The template's document builder: the paper's fields and parts, and the
    sections and pages the library adds."""

    def __init__(self, paper_type, fields, parts, hints=True):
        self._fields = fields
        self._parts = parts
        self._paper_type = paper_type
        self.outputTemplate = hints
        self.sections = []

    def PaperType(self):
        return self._paper_type

    def part(self, index):
        return index in self._parts

    def UserConfigurationValue(self, key):
        return self._fields.get(key, "")

    def AddSection(self, firstPart, lastPart, pageHeader="", sameAsPreviousSection=None):
        # A page-header record: the header's code, then its text.
        self.sections.append(Section(firstPart, lastPart, (pageHeader or "").lstrip("-0123456789")))
        return self.sections[-1]

    def outline(self, captions):
        """The chosen parts' pages, numbered as the paper will number them."""
        lines, number = [], 0
        for section in self.sections:
            pages = [p for p in section.pages if p.part in self._parts]
            if not pages:
                continue
            lines.append(f"Section (header: {section.header})")
            for page in pages:
                number += 1
                caption = captions[page.part] if page.part < len(captions) else f"part {page.part}"
                lines.append(f"  Page {number}: {caption}")
                lines.extend(f"    {line}" if line else "" for line in page.finish())
        return lines


def startup_form(main):
    """The paper's sections, and which are on by default for each paper type."""
    sections, titles, postgrad, always_on, postgrad_on = (qfa.ByRef() for _ in range(5))
    paper_type = qfa.ByRef(3)
    main.getStartupFormSettings(sections, titles, postgrad, always_on, postgrad_on, paper_type)
    captions = [record.lstrip("-0123456789") for record in sections.value]

    def default_parts(kind):
        postgraduate = kind in (1, 2)
        return {i for i in range(len(captions))
                if (i in postgrad.value and postgraduate and i in postgrad_on.value)
                or (i not in postgrad.value and i in always_on.value)}

    return captions, default_parts


def main(argv=None):
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--paper-type", type=int, default=3, choices=range(4))
    parser.add_argument("--title", default="Effects of Sleep on Memory")
    parser.add_argument("--author", default="Ada Lovelace")
    parser.add_argument("--affiliation", default="Analytical College")
    parser.add_argument("--all-parts", action="store_true", help="every section, not just the defaults")
    parser.add_argument("--no-hints", action="store_true", help="leave the editing hints out")
    args = parser.parse_args(argv)

    main2 = qfa.Main2()
    settings = SettingsDictionary()
    main2.getMetaData(settings)
    captions, default_parts = startup_form(main2)
    parts = set(range(len(captions))) if args.all_parts else default_parts(args.paper_type)

    fields = {"Title": args.title, "Author": args.author, "Affiliation": args.affiliation}
    builder = DocumentBuilder(args.paper_type, fields, parts, hints=not args.no_hints)
    main2.Execute("InitializeBuilder", builder)

    print(f"Paper: {args.title} ({PAPER_TYPES[args.paper_type]})")
    print("Parts: " + ", ".join(captions[i] for i in sorted(parts)))
    print(f"Margins (points): top {settings.Item.get('MarginTop')}, left {settings.Item.get('MarginLeft')}")
    print()
    print("\n".join(builder.outline(captions)))
    errors = qfa.library().diagnostics.errors
    for e in errors:
        print(f"error {e['number']} in {e['where']}: {e['description']}", file=sys.stderr)
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
