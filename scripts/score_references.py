#!/usr/bin/env python3
"""Runs `quillpaper refs --format=json` over the development references and
scores the predictions with ../shared/tools/score_references.py.

    scripts/score_references.py [--quillpaper build/quillpaper] [--family 1] [score options...]

Every corpus entry's text (its "typed_text" when it has one, as the entries of
scripts/typed_variants.py do) goes in as one line; the line numbers map the
output back to the corpus ids.
"""
import argparse
import json
import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
SHARED = os.path.join(HERE, "..", "..", "shared")


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    ap.add_argument("--quillpaper", default=os.path.join(HERE, "..", "build", "quillpaper"))
    ap.add_argument("--corpus", default=os.path.join(SHARED, "data", "references-dev.jsonl"))
    ap.add_argument("--family", type=int, help="score only the entries of this expected family")
    ap.add_argument("--predictions", help="keep the predictions in this file")
    ap.add_argument("--reader-threshold", help="how sure the learned reader must be (quillpaper refs' option)")
    ap.add_argument("--require", action="append", default=[], metavar="METRIC=MIN",
                    help="fail unless the summary's METRIC (type_acc, field_f1, exact, exact_norm) reaches MIN")
    args, score_args = ap.parse_known_args()

    corpus = [json.loads(line) for line in open(args.corpus, encoding="utf-8") if line.strip()]
    if args.family is not None:
        corpus = [c for c in corpus if c["expected_family"] == args.family]
    with tempfile.TemporaryDirectory() as tmp:
        subset = os.path.join(tmp, "corpus.jsonl")
        with open(subset, "w", encoding="utf-8") as f:
            for c in corpus:
                f.write(json.dumps(c, ensure_ascii=False) + "\n")
        lines = os.path.join(tmp, "lines.txt")
        with open(lines, "w", encoding="utf-8") as f:
            for c in corpus:
                f.write(c.get("typed_text", c["apa6_text"]).replace("\n", " ") + "\n")
        threshold = ["--reader-threshold=" + args.reader_threshold] if args.reader_threshold else []
        out = subprocess.run([args.quillpaper, "refs", lines, "--format=json", "--edition=6", "--on-error=ignore",
                              "--dump-dir=" + os.path.join(tmp, "dumps"), *threshold],
                             capture_output=True, text=True, check=True).stdout
        predictions = args.predictions or os.path.join(tmp, "predictions.jsonl")
        with open(predictions, "w", encoding="utf-8") as f:
            for line in out.splitlines():
                p = json.loads(line)
                p["id"] = corpus[p["line"] - 1]["id"]
                f.write(json.dumps(p, ensure_ascii=False) + "\n")
        score = os.path.join(SHARED, "tools", "score_references.py")
        result = subprocess.run([sys.executable, score, subset, predictions, *score_args],
                                capture_output=True, text=True)
        sys.stdout.write(result.stdout)
        sys.stderr.write(result.stderr)
        if result.returncode != 0:
            return result.returncode
        summary = dict(item.split("=") for item in result.stdout.splitlines()[-1].split()[1:])
        failed = False
        for requirement in args.require:
            metric, minimum = requirement.split("=")
            if float(summary[metric]) < float(minimum):
                print(f"{metric} {summary[metric]} is below {minimum}", file=sys.stderr)
                failed = True
        return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
