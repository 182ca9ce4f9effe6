#!/usr/bin/env bash
# Builds and tests both builds of the same sources: the 32-bit product (under
# qemu-i386 where this machine cannot run 32-bit programs) and the native x86_64
# build with the same instruction set, which must give the same bits.
set -eu
cd "$(dirname "$0")/.."
bash scripts/setup.sh
jobs=$(nproc)
cmake -S . -B build/i386 -DCMAKE_TOOLCHAIN_FILE="$PWD"/cmake/i386-toolchain.cmake -DVORX_BUILD_TESTS=ON >/dev/null
cmake --build build/i386 -j"$jobs"
(cd build/i386 && ctest --output-on-failure -j"$jobs")
# The native build also builds the benchmarks, whose quick pass (bench_smoke) checks
# every kernel against its reference.
cmake -S . -B build/native -DCMAKE_TOOLCHAIN_FILE="$PWD"/cmake/native-toolchain.cmake -DVORX_BUILD_TESTS=ON \
      -DVORX_BUILD_BENCH=ON \
      -DVORX_I386_DIGEST="$PWD/build/i386/digest.txt" >/dev/null
cmake --build build/native -j"$jobs"
(cd build/native && ctest --output-on-failure -j"$jobs")
