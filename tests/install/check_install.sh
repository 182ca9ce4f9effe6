#!/usr/bin/env bash
# Installs the build into a scratch prefix and builds a consumer against it, once
# through find_package(vorx) and once through pkg-config.
set -eu
build=$1 consumer=$2 toolchain=${3:-}
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null
test -f "$prefix/include/vorx.h"
test -f "$prefix/include/vorx.hpp"
test -f "$prefix/lib/libvorxa6.so"
test -f "$prefix/lib/cmake/vorx/vorxConfig.cmake"
test -f "$prefix/lib/pkgconfig/vorx.pc"
args=(-S "$consumer" -B "$prefix/consumer-build" -DCMAKE_PREFIX_PATH="$prefix")
[ -n "$toolchain" ] && args+=(-DCMAKE_TOOLCHAIN_FILE="$toolchain")
cmake "${args[@]}" >/dev/null
cmake --build "$prefix/consumer-build" >/dev/null
flags=$(PKG_CONFIG_PATH="$prefix/lib/pkgconfig" pkg-config --cflags --libs vorx)
cc_flags=""
case "$toolchain" in *i386*) cc_flags="-m32";; esac
cc $cc_flags "$consumer/consumer.c" $flags -o "$prefix/consumer-pc"
echo "consumer built with find_package and with pkg-config ($flags)"
