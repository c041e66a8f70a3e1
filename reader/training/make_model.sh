#!/usr/bin/env bash
# Regenerates the reader's training data and model from the development
# references, deterministically:
#   1. renders every development reference (CSL-JSON) with citeproc-js in
#      the trained styles and, apart, in the held-out styles (styles.py);
#   2. labels every token from the works' known fields (label_tokens.py);
#   3. trains the labeller (reader_tool train, fixed seed) into
#      reader/model/reference-reader.model;
#   4. scores the model on the held-out styles (reader/model/heldout-report.txt).
# CI never runs this: it uses the committed model.
#   reader/training/make_model.sh [BUILD_DIR]
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
root="$here/../.."
build="${1:-$root/build}"
corpus="$root/../shared/data/references-dev.jsonl"
csl="$root/../shared/data/references-dev.csl.json"
styles=/usr/share/citation-style-language

missing=()
for p in citation-style-language-styles citation-style-language-locales; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing+=("$p")
done
command -v node >/dev/null || missing+=(nodejs)
command -v npm >/dev/null || missing+=(npm)
if ((${#missing[@]})); then
  sudo=()
  [[ $(id -u) -ne 0 ]] && sudo=(sudo)
  "${sudo[@]}" apt-get update
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
fi
(cd "$here" && npm ci --no-audit --no-fund >/dev/null)

work="$here/work"
mkdir -p "$work"
for set in train heldout; do
  # shellcheck disable=SC2046
  node "$here/render_styles.js" "$csl" "$styles/styles" "$styles/locales" $(python3 "$here/styles.py" "$set") \
    >"$work/$set.rendered.jsonl"
  python3 "$here/label_tokens.py" "$corpus" "$csl" "$work/$set.rendered.jsonl" --works "$set" >"$work/$set.tsv"
done

cmake --build "$build" --target reader_tool >/dev/null
mkdir -p "$root/reader/model"
"$build/reader_tool" train "$work/train.tsv" "$root/reader/model/reference-reader.model" --epochs 6 --seed 1
"$build/reader_tool" evaluate "$root/reader/model/reference-reader.model" "$work/heldout.tsv" \
  | tee "$root/reader/model/heldout-report.txt"
