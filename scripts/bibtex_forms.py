#!/usr/bin/env python3
"""The development references as BibTeX's standard styles lay them out.

    scripts/bibtex_forms.py [--corpus FILE] [--csl FILE] [--out FILE]

Reference lists made with LaTeX are among the commonest that people paste,
and no CSL style writes them quite as BibTeX's plain, abbrv, alpha, unsrt,
apalike, ieeetr and plainnat styles do ("Journal, 12(3):45--67, 1993";
"Publisher, Place, second edition, 1989"; "[Knu84]"). This lays out each
development work (from its CSL-JSON) the way those styles do, after their
documented rules, and keeps the work's true fields, so the result scores
with score_references.py like the corpus itself. One JSON object a line,
as the corpus, with "style" and "typed_text" added. Deterministic.
"""
import argparse
import html
import json
import os
import re

HERE = os.path.dirname(os.path.abspath(__file__))
DATA = os.path.join(HERE, "..", "..", "shared", "data")
STYLES = ["plain", "abbrv", "alpha", "unsrt", "apalike", "ieeetr", "plainnat"]
MONTHS = ["January", "February", "March", "April", "May", "June", "July", "August", "September", "October",
          "November", "December"]
SHORT_MONTHS = ["Jan.", "Feb.", "Mar.", "Apr.", "May", "June", "July", "Aug.", "Sept.", "Oct.", "Nov.", "Dec."]
ORDINALS = ["first", "second", "third", "fourth", "fifth", "sixth", "seventh", "eighth", "ninth", "tenth"]


def plain_text(s):
    return html.unescape(re.sub(r"</?[a-z]+>", "", s or ""))


def initials(given):
    return " ".join("-".join(p[0] + "." for p in word.split("-") if p) for word in given.split())


def name(person, style):
    if "literal" in person:
        return person["literal"]
    given = person.get("given", "")
    family = " ".join(x for x in (person.get("non-dropping-particle", ""), person.get("family", "")) if x)
    if style in ("abbrv", "ieeetr", "apalike"):
        given = initials(given)
    if style == "apalike":
        return f"{family}, {given}" if given else family
    return f"{given} {family}".strip()


def names(people, style):
    n = [name(p, style) for p in people]
    if len(n) <= 2:
        return " and ".join(n)
    return ", ".join(n[:-1]) + ", and " + n[-1]


def ordinal(n):
    suffix = "th" if 10 <= n % 100 <= 20 else {1: "st", 2: "nd", 3: "rd"}.get(n % 10, "th")
    return ORDINALS[n - 1] if 1 <= n <= len(ORDINALS) else f"{n}{suffix}"


def edition_of(csl):
    ed = str(csl.get("edition", ""))
    if not ed:
        return ""
    return (ordinal(int(ed)) if ed.isdigit() else ed) + " edition"


def render(csl, style, number):
    kind = csl["type"]
    parts = csl.get("issued", {}).get("date-parts", [[]])[0]
    year = str(parts[0]) if parts else ""
    month = ""
    if len(parts) > 1 and 1 <= int(parts[1]) <= 12:  # 13-16 are CSL's seasons
        month = (SHORT_MONTHS if style == "ieeetr" else MONTHS)[int(parts[1]) - 1]
    date = f"{month} {year}".strip()
    authors = names(csl.get("author", []), style)
    editors = names(csl.get("editor", []), style)
    editor_word = "editors" if len(csl.get("editor", [])) > 1 else "editor"
    title = plain_text(csl.get("title", ""))
    container = plain_text(csl.get("container-title", ""))
    volume, issue = str(csl.get("volume", "")), str(csl.get("issue", ""))
    pages = str(csl.get("page", "")).replace("-", "\u2013")
    publisher, place = csl.get("publisher", ""), csl.get("publisher-place", "")
    article = kind.startswith("article")
    in_book = kind in ("chapter", "paper-conference", "entry-encyclopedia") and container
    if not authors and editors and not in_book:
        authors, editors = f"{editors}, {editor_word}", ""

    if style == "ieeetr":
        head = f"{authors}, " if authors else ""
        if article:
            bits = [container, f"vol. {volume}" if volume else "", f"no. {issue}" if issue else "",
                    f"pp. {pages}" if pages else "", date]
            text = f"{head}\u201c{title},\u201d " + ", ".join(b for b in bits if b) + "."
        elif in_book:
            bits = [f"in {container}", f"{editors}, eds." if editors else "", publisher, place,
                    f"pp. {pages}" if pages else "", year]
            text = f"{head}\u201c{title},\u201d " + ", ".join(b for b in bits if b) + "."
        else:
            bits = [title, publisher, place, edition_of(csl), year]
            text = head + ", ".join(b for b in bits if b) + "."
        return f"[{number}] {text}"

    if style == "apalike":
        lead = f"{authors} ({year}). {title}. " if authors else f"{title} ({year}). "
    else:
        lead = (f"{authors}. " if authors else "") + f"{title}. "
    dated = style != "apalike"
    if article:
        tail = container
        vi = volume + (f"({issue})" if issue else "")
        if vi and pages:
            tail += f", {vi}:{pages}"
        elif vi:
            tail += f", {vi}"
        elif pages:
            tail += f", pages {pages}"
        if dated and date:
            tail += f", {date}"
        text = lead + tail + "."
    elif in_book:
        where = "In " + (f"{editors}, {editor_word}, " if editors else "") + container
        if pages:
            where += f", pages {pages}"
        rest = ", ".join(b for b in [publisher, place, year if dated else ""] if b)
        text = lead + where + ". " + (rest + "." if rest else "")
    elif kind == "thesis":
        text = lead + ", ".join(b for b in ["PhD thesis", publisher, place, year if dated else ""] if b) + "."
    elif kind == "report":
        report = "Technical Report " + str(csl["number"]) if csl.get("number") else "Technical report"
        text = lead + ", ".join(b for b in [report, publisher, place, date if dated else ""] if b) + "."
    else:
        rest = ", ".join(b for b in [publisher, place, edition_of(csl), year if dated else ""] if b)
        text = lead + (rest + "." if rest else "")
    if style == "plainnat":
        if csl.get("DOI"):
            text += f" doi: {csl['DOI']}."
        if csl.get("URL"):
            text += f" URL {csl['URL']}."
    if style == "alpha":
        families = [p.get("family", p.get("literal", "")) for p in csl.get("author", []) or csl.get("editor", [])]
        families = [f for f in families if f] or [title]
        key = families[0][:3] if len(families) == 1 else "".join(f[0] for f in families[:4])
        text = f"[{key}{year[-2:]}] {text}"
    if style == "unsrt":
        text = f"[{number}] {text}"
    return re.sub(r"\s+", " ", text).replace("?.", "?").replace("!.", "!").replace("..", ".").strip()


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--corpus", default=os.path.join(DATA, "references-dev.jsonl"))
    ap.add_argument("--csl", default=os.path.join(DATA, "references-dev.csl.json"))
    ap.add_argument("--out", default="-")
    args = ap.parse_args()
    works = {c["id"]: c for c in json.load(open(args.csl, encoding="utf-8"))}
    gold = [json.loads(line) for line in open(args.corpus, encoding="utf-8") if line.strip()]
    out = open(args.out, "w", encoding="utf-8") if args.out != "-" else None
    for style in STYLES:
        for number, entry in enumerate(gold, 1):
            csl = works.get(entry["id"])
            if not csl:
                continue
            row = dict(entry, id=f'{entry["id"]}@{style}', style=style, typed_text=render(csl, style, number))
            print(json.dumps(row, ensure_ascii=False), file=out)


if __name__ == "__main__":
    main()
