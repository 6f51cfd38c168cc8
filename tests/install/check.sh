#!/usr/bin/env bash
# Installs a built tree into a scratch prefix, then builds a consumer against it
# twice: with find_package(qmrgen) and with pkg-config.
set -euo pipefail
build_dir=$1
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cmake --install "$build_dir" --prefix "$scratch/prefix" > /dev/null
cmake -S "$here" -B "$scratch/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$scratch/prefix" > /dev/null
cmake --build "$scratch/consumer" > /dev/null
LD_LIBRARY_PATH="$scratch/prefix/lib" "$scratch/consumer/consumer"
pcdir=$(dirname "$(find "$scratch/prefix" -name qmrgen.pc | head -n 1)")
flags=$(PKG_CONFIG_PATH="$pcdir" pkg-config --cflags --libs qmrgen)
# shellcheck disable=SC2086
cc -std=c99 -Wall -Werror "$here/consumer.c" $flags -o "$scratch/consumer-pc"
LD_LIBRARY_PATH="$scratch/prefix/lib" "$scratch/consumer-pc"
