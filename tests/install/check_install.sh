#!/usr/bin/env bash
# Installs the library into a scratch prefix and builds a small outside
# program against it twice: through find_package and through pkg-config.
# Usage: check_install.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build=$1
source=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
libdir=$(dirname "$(find "$scratch/prefix" -name 'libQuillFormatAPA.so' | head -1)")
test -f "$libdir/QuillFormatAPA.typelib.json"

echo "== find_package(QuillFormatAPA)"
cmake -S "$source/tests/install/consumer" -B "$scratch/cmake-build" -DCMAKE_PREFIX_PATH="$scratch/prefix" >/dev/null
cmake --build "$scratch/cmake-build" >/dev/null
LD_LIBRARY_PATH="$libdir" "$scratch/cmake-build/consumer"

echo "== pkg-config quillformatapa"
export PKG_CONFIG_PATH="$libdir/pkgconfig"
# shellcheck disable=SC2046 # the flags are words of their own
cc -std=c11 -Wall -Werror -o "$scratch/consumer-pc" "$source/tests/install/consumer/consumer.c" \
  $(pkg-config --cflags --libs quillformatapa)
LD_LIBRARY_PATH="$libdir" "$scratch/consumer-pc"
