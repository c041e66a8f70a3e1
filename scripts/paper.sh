#!/usr/bin/env bash
# Builds quillpaper and runs it. With no arguments it writes paper.docx, a
# complete APA paper full of placeholders; any arguments go to quillpaper
# ("scripts/paper.sh new thesis.docx --paper-type=2 --title=...").
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$(nproc)" --target quillpaper
if (($# == 0)); then set -- new paper.docx; fi
exec build/quillpaper "$@"
