#!/usr/bin/env bash
# Builds everything and runs every test. With --sanitize, the same tests run
# under AddressSanitizer and UndefinedBehaviorSanitizer in a build of their own;
# with --tsan, the library and its many-thread tests under ThreadSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/deps.sh --office

build=build
flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
if [[ "${1:-}" == --sanitize ]]; then
  build=build-sanitize
  flags=(-DCMAKE_BUILD_TYPE=Debug -DQFA_SANITIZE=ON -DQFA_BUILD_BENCH=OFF)
fi
if [[ "${1:-}" == --tsan ]]; then
  cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQFA_WERROR=ON -DQFA_TSAN=ON -DQFA_BUILD_BENCH=OFF \
    -DQFA_BUILD_HOST=OFF >/dev/null
  cmake --build build-tsan -j "$(nproc)" --target thread_stress_tests
  TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" build-tsan/tests/thread_stress_tests
  exit
fi

cmake -S . -B "$build" -DQFA_WERROR=ON "${flags[@]}" >/dev/null
cmake --build "$build" -j "$(nproc)"
ctest --test-dir "$build" --output-on-failure -j "$(nproc)"
# ctest runs each test alone; the test programs also pass whole, in an order
# of their own each time, so that no test leans on another's leftovers.
for program in "$build"/tests/*_tests; do
  "$program" --gtest_shuffle --gtest_random_seed=0 --gtest_brief=1 >/dev/null || {
    echo "$program fails in a shuffled order; rerun with --gtest_shuffle --gtest_random_seed=<seed it printed>" >&2
    "$program" --gtest_shuffle --gtest_random_seed=0 2>&1 | grep -E "random seed|FAILED" >&2
    exit 1
  }
done
