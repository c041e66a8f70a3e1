#!/usr/bin/env python3
"""Writes the development references the way people type them.

    scripts/typed_variants.py [--corpus FILE] [--csl FILE] [--out FILE] [--kinds and,fullnames,...]

Each development entry is rewritten in one of the forms people use instead of
APA's own ("and" for "&", full given names, "vol. 3, no. 2, pp. 4-5", a bare
address instead of "Retrieved from", a DOI as "DOI: 10..."); the true fields
stay those of the entry, so the result scores with score_references.py like
the corpus itself. Only entries that have the part a form rewrites get that
variant. One JSON object a line, as the corpus, with "variant" naming the form
and "typed_text" the entry as typed; "apa6_text" stays the APA form a careful
person would write from it (the typed text itself where the form adds words
APA keeps, such as a retrieval date).
"""
import argparse
import json
import os
import re
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
DATA = os.path.join(HERE, "..", "..", "shared", "data")


def initials(given):
    out = []
    for word in given.split():
        parts = [p for p in word.split("-") if p]
        if not parts:
            continue
        if all(len(p.rstrip(".")) == 1 for p in parts):
            out.append(word if word.endswith(".") else word + ".")
        else:
            out.append("-".join(p[0] + "." for p in parts))
    return " ".join(out)


def v_and(text, csl):
    if " & " not in text.split(" (")[0]:
        return None
    head, sep, tail = text.partition(" (")
    return head.replace(", & ", ", and ").replace(" & ", " and ") + sep + tail


def v_and_no_comma(text, csl):
    head, sep, tail = text.partition(" (")
    if ", & " not in head:
        return None
    return head.replace(", & ", " and ") + sep + tail


def v_full_names(text, csl):
    changed = text
    for a in csl.get("author", []):
        given, family = a.get("given", ""), a.get("family", "")
        if not given or not family or all(len(w.strip(".")) <= 2 for w in given.replace("-", " ").split()):
            continue
        short = f"{family}, {initials(given)}"
        if short in changed:
            changed = changed.replace(short, f"{family}, {given}", 1)
    return changed if changed != text else None


def v_date_comma(text, csl):
    m = re.search(r"\((\d{4}[a-z]?|n\.d\.)(, [^)]{1,30})?\)\. ", text)
    if not m:
        return None
    return text[: m.end() - 2] + ", " + text[m.end():]


# "Journal, 12(3), 45–67." and its numbers.
PERIODICAL = re.compile(r", (\d+)(?:\((\d+)\))?, (\d+[–-]\d+)\.")


def periodical_forms(text, csl, form):
    if not csl.get("type", "").startswith("article"):
        return None
    m = PERIODICAL.search(text)
    if not m:
        return None
    vol, issue, pages = m.group(1), m.group(2), m.group(3)
    return text[: m.start()] + form(vol, issue, pages) + text[m.end():]


def v_vol_no(text, csl):
    return periodical_forms(text, csl, lambda v, i, p: f", vol. {v}" + (f", no. {i}" if i else "") + f", pp. {p}.")


def v_pp(text, csl):
    return periodical_forms(text, csl, lambda v, i, p: f", {v}" + (f"({i})" if i else "") + f", pp. {p}.")


def v_colon_pages(text, csl):
    return periodical_forms(text, csl, lambda v, i, p: f", {v}" + (f"({i})" if i else "") + f": {p}.")


def v_hyphen_pages(text, csl):
    return periodical_forms(text, csl, lambda v, i, p: f", {v}" + (f"({i})" if i else "") + f", {p.replace('–', '-')}.")


def v_doi(text, csl):
    if "https://doi.org/" not in text:
        return None
    return text.replace("https://doi.org/", "DOI: ")


def v_dx_doi(text, csl):
    if "https://doi.org/" not in text:
        return None
    return text.replace("https://doi.org/", "http://dx.doi.org/")


def v_bare_url(text, csl):
    if "Retrieved from " not in text:
        return None
    return text.replace("Retrieved from ", "")


def v_available(text, csl):
    if "Retrieved from " not in text:
        return None
    return text.replace("Retrieved from ", "Available at: ")


def v_retrieval_date(text, csl):
    if "Retrieved from " not in text:
        return None
    return text.replace("Retrieved from ", "Retrieved May 5, 2010, from ")


def v_original(text, csl):
    if "(Original work" in text:
        return None
    return text.rstrip() + " (Original work published 1900)"


KINDS = {
    "and": v_and,
    "and-no-comma": v_and_no_comma,
    "full-names": v_full_names,
    "date-comma": v_date_comma,
    "vol-no": v_vol_no,
    "pp": v_pp,
    "colon-pages": v_colon_pages,
    "hyphen-pages": v_hyphen_pages,
    "doi-label": v_doi,
    "dx-doi": v_dx_doi,
    "bare-url": v_bare_url,
    "available-at": v_available,
    "retrieval-date": v_retrieval_date,
    "original-note": v_original,
}

# Forms whose extra words APA keeps: the APA form is the typed text.
KEEPS_WORDS = {"retrieval-date", "original-note"}


def variants(corpus, csl_by_id, kinds):
    for entry in corpus:
        csl = csl_by_id.get(entry["id"], {})
        for kind in kinds:
            text = KINDS[kind](entry["apa6_text"], csl)
            if text:
                apa = text if kind in KEEPS_WORDS else entry["apa6_text"]
                yield dict(entry, id=f"{entry['id']}~{kind}", variant=kind, typed_text=text, apa6_text=apa)


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    ap.add_argument("--corpus", default=os.path.join(DATA, "references-dev.jsonl"))
    ap.add_argument("--csl", default=os.path.join(DATA, "references-dev.csl.json"))
    ap.add_argument("--out", default="-")
    ap.add_argument("--kinds", default=",".join(KINDS), help="comma-separated, of: " + ", ".join(KINDS))
    args = ap.parse_args()
    corpus = [json.loads(line) for line in open(args.corpus, encoding="utf-8") if line.strip()]
    csl_by_id = {c["id"]: c for c in json.load(open(args.csl, encoding="utf-8"))}
    kinds = [k for k in args.kinds.split(",") if k]
    unknown = [k for k in kinds if k not in KINDS]
    if unknown:
        ap.error("unknown kinds: " + ", ".join(unknown))
    out = sys.stdout if args.out == "-" else open(args.out, "w", encoding="utf-8")
    for v in variants(corpus, csl_by_id, kinds):
        out.write(json.dumps(v, ensure_ascii=False) + "\n")


if __name__ == "__main__":
    main()
