#!/usr/bin/env bash
# Builds everything and runs every test. With --sanitize, the same tests run
# under AddressSanitizer and UndefinedBehaviorSanitizer in a build of their own.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/deps.sh --office

build=build
flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
if [[ "${1:-}" == --sanitize ]]; then
  build=build-sanitize
  flags=(-DCMAKE_BUILD_TYPE=Debug -DQFA_SANITIZE=ON -DQFA_BUILD_BENCH=OFF)
fi

cmake -S . -B "$build" "${flags[@]}" >/dev/null
cmake --build "$build" -j "$(nproc)"
ctest --test-dir "$build" --output-on-failure -j "$(nproc)"
