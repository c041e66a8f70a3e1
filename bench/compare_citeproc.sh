#!/usr/bin/env bash
# quillpaper refs against citeproc-js on the same works in APA 6: citeproc
# formats the development references' CSL-JSON with Debian's APA 6 style;
# quillpaper reads and writes the same references as typed in APA 6 (the
# list ten times over, whole process, one thread and two). Prints each rate
# and the ratios. Needs node, npm's citeproc (reader/training: npm ci) and
# Debian's citation-style-language-styles; not run by CI.
#   bench/compare_citeproc.sh [build/quillpaper]
set -euo pipefail
cd "$(dirname "$0")/.."
quillpaper=${1:-build/quillpaper}
data=../shared/data
styles=/usr/share/citation-style-language
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

python3 - "$data/references-dev.jsonl" "$work/refs.txt" <<'PY'
import json, sys
lines = [json.loads(l)["apa6_text"] for l in open(sys.argv[1], encoding="utf-8")]
open(sys.argv[2], "w", encoding="utf-8").write("\n".join(lines * 10) + "\n")
PY
entries=$(wc -l < "$work/refs.txt")

NODE_PATH=reader/training/node_modules node bench/citeproc_apa6.js "$data/references-dev.csl.json" \
  "$styles/styles/apa-6th-edition.csl" "$styles/locales" 10 > "$work/citeproc.txt"
one=$(awk '/one-at-a-time/ {print $2}' "$work/citeproc.txt")
whole=$(awk '/whole-list/ {print $2}' "$work/citeproc.txt")

# The best of three runs, as the others are for a machine's noise.
rate() {
  local best=0
  for _ in 1 2 3; do
    local start end r
    start=$(date +%s.%N)
    "$quillpaper" refs "$work/refs.txt" --edition=6 "$@" > /dev/null 2>&1
    end=$(date +%s.%N)
    r=$(echo "$entries / ($end - $start)" | bc -l)
    best=$(echo "if ($r > $best) $r else $best" | bc -l)
  done
  printf '%.0f' "$best"
}
single=$(rate --jobs=1)
double=$(rate --jobs=2)

echo "machine: $(nproc) cores, $(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2 | sed 's/^ //')"
echo "citeproc-js, one item at a time:  $one items/s"
echo "citeproc-js, whole bibliography:  $whole items/s"
echo "quillpaper refs, --jobs=1:        $single entries/s ($(echo "$single / $whole" | bc -l | xargs printf '%.1f')x the whole-bibliography rate, $(echo "$single / $one" | bc -l | xargs printf '%.1f')x one at a time)"
echo "quillpaper refs, --jobs=2:        $double entries/s ($(echo "$double / $whole" | bc -l | xargs printf '%.1f')x the whole-bibliography rate)"
