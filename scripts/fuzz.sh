#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (with AddressSanitizer and
# UndefinedBehaviorSanitizer) and runs each for a bounded time, from a seed
# corpus of real references when ../shared/data is there.
#   scripts/fuzz.sh [--seconds N] [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=20
if [[ "${1:-}" == --seconds ]]; then
  seconds=$2
  shift 2
fi
targets=("$@")
[[ ${#targets[@]} -gt 0 ]] || targets=(fuzz_strings fuzz_retrieval fuzz_classifier fuzz_pipeline fuzz_server fuzz_csv)

scripts/deps.sh --fuzz

build=build-fuzz
cmake -S . -B "$build" -DCMAKE_CXX_COMPILER=clang++-16 -DCMAKE_C_COMPILER=clang-16 -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DQFA_FUZZ=ON -DQFA_BUILD_TESTS=ON -DQFA_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" --target "${targets[@]}"

# Seeds: one file per development reference.
seeds="$build/seeds"
corpus=../shared/data/references-dev.jsonl
if [[ ! -d "$seeds" && -f "$corpus" ]]; then
  mkdir -p "$seeds"
  python3 - "$corpus" "$seeds" <<'PY'
import json, sys, pathlib
out = pathlib.Path(sys.argv[2])
for n, line in enumerate(open(sys.argv[1], encoding="utf-8")):
    if line.strip():
        (out / f"ref{n:04d}").write_text(json.loads(line)["apa6_text"], encoding="utf-8")
PY
fi

status=0
for target in "${targets[@]}"; do
  work="$build/corpus/$target"
  mkdir -p "$work"
  dirs=("$work")
  if [[ $target == fuzz_csv ]]; then
    dirs+=(tests/stats/data)  # data files, not references
  elif [[ -d "$seeds" ]]; then
    dirs+=("$seeds")
  fi
  echo "== $target: ${seconds}s"
  if ! "$build/fuzz/$target" -max_total_time="$seconds" -max_len=131072 -timeout=10 -rss_limit_mb=2048 \
      -print_final_stats=1 -artifact_prefix="$build/$target-" "${dirs[@]}" >"$build/$target.log" 2>&1; then
    echo "$target FAILED; its log: $build/$target.log" >&2
    tail -n 40 "$build/$target.log" >&2
    status=1
    continue
  fi
  grep -E "^(Done|stat::number_of_executed_units|stat::peak_rss_mb)" "$build/$target.log" || true
done
exit $status
