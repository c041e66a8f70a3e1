#!/usr/bin/env bash
# Installs from Debian's archive whatever building (and, with --office,
# checking documents in LibreOffice, --fuzz fuzzing with clang, --stats R for the
# statistics' reference values) needs and the machine lacks.
set -euo pipefail

packages=(g++ cmake make pkg-config python3 libgtest-dev libgmock-dev libbenchmark-dev libzip-dev zlib1g-dev libpugixml-dev
          libeigen3-dev libboost-math-dev)
case "${1:-}" in
  --office) packages+=(libreoffice-writer-nogui python3-uno poppler-utils fonts-liberation fonts-dejavu-core) ;;
  --fuzz) packages+=(clang-16 libclang-rt-16-dev) ;;  # clang 16 knows std::source_location
  --stats) packages+=(r-base-core) ;;  # R, to regenerate the statistics tests' reference values
esac

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing+=("$p")
done
((${#missing[@]} == 0)) && exit 0

sudo=()
[[ $(id -u) -ne 0 ]] && sudo=(sudo)
echo "Installing: ${missing[*]}" >&2
"${sudo[@]}" apt-get update
DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
