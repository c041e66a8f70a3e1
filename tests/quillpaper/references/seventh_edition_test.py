#!/usr/bin/env python3
"""Every development reference written in the 7th edition, checked against
the 7th edition's rules:
  - no publisher's place ("New York, NY: Wiley" is "Wiley");
  - a DOI as an address, "https://doi.org/10…", never "doi:";
  - no "Retrieved from" before an address without a retrieval date;
  - the author rule: up to 20 authors all named, from 21 the first 19, an
    ellipsis and the last; no ellipsis where the list was whole.
Entries kept as typed are counted, not checked (they are as the user wrote).

    seventh_edition_test.py --quillpaper build/quillpaper [--corpus FILE]
"""
import argparse
import json
import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
CORPUS = os.path.join(HERE, "..", "..", "..", "..", "shared", "data", "references-dev.jsonl")


def problems_of(result):
    text = result["formatted_text"]
    fields = result["fields"]
    found = []
    place, publisher = fields.get("publisher_place"), fields.get("publisher")
    if place and publisher and (place + ": " + publisher in text or publisher + ", " + place in text):
        found.append("the publisher's place is written")
    if "doi:" in text.lower():
        found.append("a DOI written as doi:")
    if fields.get("doi") and "https://doi.org/" + fields["doi"] not in text:
        found.append("the DOI is not an address")
    if "Retrieved from" in text:
        found.append("Retrieved from without a retrieval date")
    authors = fields.get("authors", [])
    shown = [a for a in authors if a["family"] and a["family"] + "," in text]
    if len(authors) <= 20 and "\u2026" not in result["input"] and "\u2026" in text:
        found.append("an ellipsis in a list of 20 or fewer")
    if len(authors) > 20 and len(shown) != 20:
        found.append(f"{len(shown)} of {len(authors)} authors shown, not 19 and the last")
    return found


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    ap.add_argument("--quillpaper", required=True)
    ap.add_argument("--corpus", default=CORPUS)
    args = ap.parse_args()
    corpus = [json.loads(line) for line in open(args.corpus, encoding="utf-8") if line.strip()]
    with tempfile.TemporaryDirectory() as tmp:
        path = os.path.join(tmp, "refs.txt")
        with open(path, "w", encoding="utf-8") as f:
            for c in corpus:
                f.write(c["apa6_text"] + "\n")
        done = subprocess.run([args.quillpaper, "refs", path, "--format=json", "--edition=7", "--on-error=ignore",
                               "--dump-dir=" + tmp], capture_output=True, text=True)
    results = [json.loads(line) for line in done.stdout.splitlines()]
    failures, kept = [], 0
    for r in results:
        if r["problems"]:
            kept += 1
            continue
        for problem in problems_of(r):
            failures.append(f"line {r['line']}: {problem}: {r['formatted_text']}")
    print(f"{len(results)} entries in the 7th edition, {kept} kept as typed, {len(failures)} breaking its rules")
    for f in failures[:20]:
        print("FAIL", f)
    return 1 if failures or len(results) != len(corpus) else 0


if __name__ == "__main__":
    sys.exit(main())
