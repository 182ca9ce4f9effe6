#!/usr/bin/env bash
# The catalogue fuzzer (libFuzzer, with AddressSanitizer and UndefinedBehaviorSanitizer).
#
#   scripts/fuzz.sh SECONDS        fuzz for that long from the committed seed corpus
#   scripts/fuzz.sh --replay FILE  run one input, e.g. a finding the fuzzer left
#   scripts/fuzz.sh --only PREFIX SECONDS
#                                  fuzz only the functions whose names begin with PREFIX
#
# It runs in the checking build build/asan, which the sanitizer suite shares.
# Findings go to build/asan/findings/; new inputs to build/asan/corpus/.
set -eu
cd "$(dirname "$0")/.."
bash scripts/setup.sh
build=build/asan
bash scripts/checked.sh asan vorx_fuzz >/dev/null
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}
if [ "${1:-}" = "--only" ]; then
    export VORX_FUZZ_ONLY=$2
    shift 2
fi
if [ "${1:-}" = "--replay" ]; then
    VORX_FUZZ_SHOW=1 exec "$build/tests/vorx_fuzz" "$2"
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
