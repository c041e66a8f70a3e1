#!/usr/bin/env bash
# Builds quillpaper and runs it: with no arguments it prints the start-up form.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$(nproc)" --target quillpaper
if (($# == 0)); then set -- form; fi
exec build/quillpaper "$@"
