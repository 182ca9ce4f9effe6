#!/usr/bin/env bash
# Configures and builds a checking build of the library and its harness in build/KIND:
#
#   scripts/checked.sh asan TARGET...   clang: AddressSanitizer, UndefinedBehaviorSanitizer
#                                       and the fuzzer's coverage (the suite and the fuzzer)
#   scripts/checked.sh tsan TARGET...   ThreadSanitizer (the suite)
set -eu
cd "$(dirname "$0")/.."
root=$PWD
kind=$1
shift
case $kind in
    asan) toolchain=clang-toolchain.cmake ;;
    tsan) toolchain=native-toolchain.cmake ;;
    *) echo "usage: scripts/checked.sh asan|tsan TARGET..."; exit 2 ;;
esac
# A build directory made with another compiler cannot be reconfigured: start afresh.
if [ -f "build/$kind/CMakeCache.txt" ] && [ "$(cat "build/$kind/toolchain" 2>/dev/null)" != "$toolchain" ]; then
    rm -rf "build/$kind"
fi
cmake -S . -B "build/$kind" -DCMAKE_TOOLCHAIN_FILE="$root/cmake/$toolchain" -DVORX_CHECK="$kind" \
      -DVORX_BUILD_TESTS=ON -DVORX_BUILD_EXAMPLES=OFF >/dev/null
echo "$toolchain" >"build/$kind/toolchain"
cmake --build "build/$kind" -j"$(nproc)" --target "$@"
