#!/usr/bin/env python3
"""The rule that guards what people type, checked on every development entry
and on the same entries typed the way people type them.

    invariant_test.py --quillpaper build/quillpaper [--corpus ../shared/data/references-dev.jsonl]

Every line goes through `quillpaper refs` in its JSON, text, HTML and Markdown
forms. The test fails when
  - an entry is missing from an output, or is left out of the list without
    a reason;
  - an entry's shown text loses a word of what was typed (an independent
    check: APA's labels, "and" as "&", given names as initials and the names
    the first-six-and-last rule leaves out aside);
  - more entries than the budget are kept as typed (the reading got worse).
It prints the counts for each form people type.
"""
import argparse
import collections
import html
import json
import os
import re
import subprocess
import sys
import tempfile
import unicodedata

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.join(HERE, "..", "..", "..")
sys.path.insert(0, os.path.join(ROOT, "scripts"))
import typed_variants  # noqa: E402

# Words APA writes or drops as labels; lost, they are no loss.
LABELS = {"vol", "vols", "volume", "no", "nos", "pp", "p", "iss", "ed", "eds", "edn", "edition", "trans", "comp",
          "comps", "retrieved", "from", "available", "at", "accessed", "viewed", "url", "and", "doi", "online",
          "abstract", "supplement"}
ORDINALS = {"first": "1st", "second": "2nd", "third": "3rd", "fourth": "4th", "fifth": "5th"}
# Share of entries of each kind that may be kept as typed.
BUDGET = 0.02


def words(text):
    text = unicodedata.normalize("NFC", text)
    out = []
    for m in re.finditer(r"(?:https?://|www\.)\S+|doi:\s*\S+|10\.\d{4,}/\S+|[^\W_]+", text, re.I):
        w = m.group(0)
        if re.match(r"(?:https?://|www\.|doi:|10\.)", w, re.I):
            w = re.sub(r"^(https?://(dx\.)?doi\.org/|doi:\s*)", "doi:", w.rstrip(".,;)"), flags=re.I)
            out.append(w.lower() if w.startswith("doi:") else w)
        else:
            out.append(ORDINALS.get(w.lower(), w.lower()))
    return out


def lost_words(typed, shown, authors):
    """What `typed` holds that `shown` lacks, less what APA may drop."""
    allowed = collections.Counter()
    for a in authors:
        for w in words(a.get("given", "")) + words(a.get("family", "")):
            allowed[w] += 1
    lost = collections.Counter(words(typed)) - collections.Counter(words(shown))
    return [w for w, n in lost.items() for _ in range(n) if w not in LABELS and allowed[w] == 0]


def run(quillpaper, path, fmt):
    with tempfile.TemporaryDirectory() as dumps:
        done = subprocess.run([quillpaper, "refs", path, "--format=" + fmt, "--edition=6", "--on-error=ignore",
                               "--dump-dir=" + dumps], capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"quillpaper refs --format={fmt} failed: {done.stderr}")
    return done.stdout


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    ap.add_argument("--quillpaper", required=True)
    ap.add_argument("--corpus", default=os.path.join(ROOT, "..", "shared", "data", "references-dev.jsonl"))
    ap.add_argument("--csl", default=os.path.join(ROOT, "..", "shared", "data", "references-dev.csl.json"))
    args = ap.parse_args()

    corpus = [json.loads(line) for line in open(args.corpus, encoding="utf-8") if line.strip()]
    csl = {c["id"]: c for c in json.load(open(args.csl, encoding="utf-8"))}
    entries = [("as written", c["apa6_text"]) for c in corpus]
    entries += [(v["variant"], v["typed_text"]) for v in typed_variants.variants(corpus, csl, typed_variants.KINDS)]
    # Two entries pasted on one line: still no word may go.
    entries += [("two joined", a["apa6_text"] + " " + b["apa6_text"]) for a, b in zip(corpus[::2], corpus[1::2])]

    failures = []
    with tempfile.TemporaryDirectory() as tmp:
        path = os.path.join(tmp, "typed.txt")
        with open(path, "w", encoding="utf-8") as f:
            for _, text in entries:
                f.write(text + "\n")
        results = [json.loads(line) for line in run(args.quillpaper, path, "json").splitlines()]
        text_lines = run(args.quillpaper, path, "text").splitlines()
        page = run(args.quillpaper, path, "html")
        markdown = run(args.quillpaper, path, "markdown")

    if [r["line"] for r in results] != list(range(1, len(entries) + 1)):
        failures.append("the JSON output does not hold every entry once, in order")
    listed = [r for r in results if "excluded" not in r]
    if text_lines != [r["formatted_text"] for r in listed]:
        failures.append("the text output differs from the JSON's entries")
    paragraphs = re.findall(r'<p class="reference">(.*?)</p>', page)
    if [html.unescape(re.sub(r"</?i>", "", p)) for p in paragraphs] != [r["formatted_text"] for r in listed]:
        failures.append("the HTML output differs from the JSON's entries")
    if len([b for b in markdown.split("\n\n") if b.strip()]) != len(listed):
        failures.append("the Markdown output does not hold every listed entry")

    kept = collections.Counter()
    total = collections.Counter()
    for (kind, typed), r in zip(entries, results):
        total[kind] += 1
        if "excluded" in r and not r["excluded"]:
            failures.append(f"line {r['line']}: left out without a reason")
        if r["problems"]:
            kept[kind] += 1
        lost = lost_words(typed, r["formatted_text"], r["fields"]["authors"])
        if lost:
            failures.append(f"line {r['line']} ({kind}) loses {lost}: {typed}")
    for kind in total:
        print(f"{kind:16} {total[kind]:5} entries, {kept[kind]:3} kept as typed")
        if kept[kind] > BUDGET * total[kind] and kind != "two joined":
            failures.append(f"{kind}: {kept[kind]} of {total[kind]} kept as typed, more than {BUDGET:.0%}")
    for f in failures[:30]:
        print("FAIL", f)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
