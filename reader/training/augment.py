#!/usr/bin/env python3
"""More works to train on: the training works' parts put together anew.

    augment.py CSL.json CORPUS.jsonl --copies N --seed S OUT.csl.json OUT.jsonl

Every training work (never a held-out one) is written out as it is and, N
times more, as a new work of the same type with the same parts, each part
taken from another training work that has it: the authors of one, the title
of another, the journal of a third, the pages of a fourth. The reader then
meets words in new company and learns where a style puts a part, not which
words belong to which of the 600 works. OUT.jsonl holds each work's true
fields, as CORPUS does. The same input and seed give the same output.
"""
import argparse
import json
import random
import re

from label_tokens import heldout_work

# Parts that travel together: a publisher with its place.
GROUPS = [("publisher", "publisher-place")]
# Parts whose values depend on what kind of work holds them: taken only from
# a work of the same type.
BY_TYPE = {"container-title", "collection-title", "genre", "number", "event", "event-place"}
PERIODICAL = {"article-journal", "article-magazine", "article-newspaper", "review"}


def fields_of(work):
    """The fields a reader of the list knows, from a CSL-JSON work."""
    def names(key):
        out = []
        for p in work.get(key, []):
            if "literal" in p:
                out.append({"family": p["literal"], "given": ""})
            elif "family" in p:
                out.append({"family": p["family"], "given": p.get("given", "")})
        return out

    fields = {"authors": names("author"), "editors": names("editor")}
    parts = (work.get("issued") or {}).get("date-parts") or [[]]
    if parts[0]:
        fields["year"] = str(parts[0][0])
    for key, name in (("title", "title"), ("container-title", "container_title"), ("volume", "volume"),
                      ("issue", "issue"), ("page", "pages"), ("publisher", "publisher"),
                      ("publisher-place", "publisher_place"), ("edition", "edition"), ("DOI", "doi"),
                      ("URL", "url")):
        if work.get(key):
            fields[name] = re.sub(r"<[^>]+>", "", str(work[key]))
    return fields


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("csl")
    ap.add_argument("corpus")
    ap.add_argument("out_csl")
    ap.add_argument("out_corpus")
    ap.add_argument("--copies", type=int, default=2)
    ap.add_argument("--seed", type=int, default=1)
    args = ap.parse_args()

    works = [w for w in json.load(open(args.csl, encoding="utf-8")) if not heldout_work(w["id"])]
    corpus = {}
    for line in open(args.corpus, encoding="utf-8"):
        if line.strip():
            d = json.loads(line)
            corpus[d["id"]] = d
    rng = random.Random(args.seed)
    # Who has each part, for each type and for any type.
    having = {}
    for w in works:
        for key in w:
            having.setdefault((None, key), []).append(w)
            having.setdefault((w["type"], key), []).append(w)

    out_csl, out_corpus = [], []
    for w in works:
        out_csl.append(w)
        out_corpus.append(corpus[w["id"]])
    for copy in range(args.copies):
        for w in works:
            new = {"id": f"synthetic{copy}:{w['id']}", "type": w["type"]}
            done = set()
            for key in sorted(w):
                if key in ("id", "type") or key in done:
                    continue
                group = next((g for g in GROUPS if key in g), (key,))
                pool = having.get((w["type"] if key in BY_TYPE else None, key)) or [w]
                donor = rng.choice(pool)
                for k in group:
                    if k in w and k in donor:
                        new[k] = donor[k]
                    elif k in w:
                        new[k] = w[k]
                    done.add(k)
            out_csl.append(new)
            family = 1 if w["type"] in PERIODICAL else 0
            out_corpus.append({"id": new["id"], "csl_type": w["type"], "expected_family": family,
                               "fields": fields_of(new)})
    with open(args.out_csl, "w", encoding="utf-8") as f:
        json.dump(out_csl, f, ensure_ascii=False)
    with open(args.out_corpus, "w", encoding="utf-8") as f:
        for d in out_corpus:
            f.write(json.dumps(d, ensure_ascii=False) + "\n")


if __name__ == "__main__":
    main()
