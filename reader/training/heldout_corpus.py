#!/usr/bin/env python3
"""The development references as the held-out styles write them, with their
gold fields, for scripts/score_references.py:

    heldout_corpus.py CORPUS.jsonl RENDERED.jsonl [--works heldout] > CORPUS-IN-STYLES.jsonl

Each line is the corpus entry with "typed_text" set to the rendering and
"style" added; --works heldout keeps only the works the reader never trained on.
"""
import json
import sys

from label_tokens import heldout_work


def main():
    only_heldout = "--works" in sys.argv and sys.argv[sys.argv.index("--works") + 1] == "heldout"
    corpus = {}
    for line in open(sys.argv[1], encoding="utf-8"):
        if line.strip():
            d = json.loads(line)
            corpus[d["id"]] = d
    for line in open(sys.argv[2], encoding="utf-8"):
        r = json.loads(line)
        work = corpus.get(r["id"])
        if not work or (only_heldout and not heldout_work(r["id"])):
            continue
        out = dict(work)
        out["id"] = f'{r["id"]}@{r["style"]}'
        out["style"] = r["style"]
        out["typed_text"] = r["text"]
        print(json.dumps(out, ensure_ascii=False))


if __name__ == "__main__":
    main()
