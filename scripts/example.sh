#!/usr/bin/env bash
# Builds libvorxa6.so (32-bit x86, SSE without SSE2) and runs the example program.
set -eu
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build/i386 -DCMAKE_TOOLCHAIN_FILE="$PWD"/cmake/i386-toolchain.cmake -DVORX_BUILD_TESTS=OFF >/dev/null
cmake --build build/i386 --target vorx_example -j"$(nproc)"
emulator=$(sed -n 's/^CMAKE_CROSSCOMPILING_EMULATOR:[A-Z]*=//p; s/^VORX_QEMU_I386:[A-Z]*=//p' build/i386/CMakeCache.txt | head -n1)
runs=$(sed -n 's/^VORX_RUNS_I386:[A-Z]*=//p' build/i386/CMakeCache.txt)
if [ "$runs" = "ON" ]; then
    build/i386/vorx_example
else
    echo "(this machine cannot run 32-bit programs: running the example under qemu-i386)"
    "$emulator" -L / build/i386/vorx_example
fi
