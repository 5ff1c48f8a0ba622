#!/usr/bin/env bash
# Installs the built tree into a scratch prefix, then builds and runs a small
# consumer against it twice: through find_package(Quorin) and through pkg-config.
set -euo pipefail
build=$1 consumer=$2 scratch=$3
rm -rf "$scratch"
cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
cmake -S "$consumer" -B "$scratch/cmake" -DCMAKE_PREFIX_PATH="$scratch/prefix" -DCMAKE_C_FLAGS="${CONSUMER_CFLAGS:-}" >/dev/null
cmake --build "$scratch/cmake" >/dev/null
"$scratch/cmake/consumer"
libdir=$(dirname "$(find "$scratch/prefix" -name quorin.pc | head -n1)")
export PKG_CONFIG_PATH="$libdir"
cc -std=c99 ${CONSUMER_CFLAGS:-} $(pkg-config --cflags quorin) "$consumer/consumer.c" -o "$scratch/pkgconfig-consumer" $(pkg-config --libs quorin)
"$scratch/pkgconfig-consumer"
echo "install check passed"
