#!/usr/bin/env bash
# The catalogue fuzzer (libFuzzer, with AddressSanitizer and UndefinedBehaviorSanitizer).
#
#   scripts/fuzz.sh SECONDS        fuzz for that long from the committed seed corpus
#   scripts/fuzz.sh --replay FILE  run one input, e.g. a finding the fuzzer left
#
# Findings go to build/fuzz/findings/; new inputs to build/fuzz/corpus/.
set -eu
cd "$(dirname "$0")/.."
root=$PWD
bash scripts/setup.sh
build=build/fuzz
cmake -S . -B "$build" -DCMAKE_TOOLCHAIN_FILE="$root/cmake/fuzz-toolchain.cmake" -DVORX_CHECK=fuzz \
      -DVORX_BUILD_TESTS=ON -DVORX_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" --target vorx_fuzz >/dev/null
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}
if [ "${1:-}" = "--replay" ]; then
    exec "$build/tests/vorx_fuzz" "$2"
fi
seconds=${1:-60}
mkdir -p "$build/corpus" "$build/findings"
echo "fuzz: $seconds s from tests/fuzz/corpus"
if ! "$build/tests/vorx_fuzz" -max_total_time="$seconds" -timeout=20 -max_len=256 -print_final_stats=1 \
        -artifact_prefix="$build/findings/" "$build/corpus" tests/fuzz/corpus > "$build/fuzz.log" 2>&1; then
    grep -E 'vorx fuzz:|ERROR|SUMMARY|Test unit written' "$build/fuzz.log" | head -20
    found=$(ls -t "$build"/findings/* 2>/dev/null | head -n1)
    echo "fuzz: a finding; reproduce with: scripts/fuzz.sh --replay $found"
    exit 1
fi
grep -E 'stat::number_of_executed_units|stat::new_units_added' "$build/fuzz.log" || true
echo "fuzz: no finding"
