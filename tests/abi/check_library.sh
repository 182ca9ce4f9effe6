#!/usr/bin/env bash
# Checks the built library file: it imports nothing, exports exactly the catalogue's
# built names, holds no instruction beyond SSE (x87 and SSE single only), and has no
# writable data of its own.
set -u
lib=$1 names=$2 what=$3
case $what in
exports)
    diff <(nm -D --defined-only "$lib" | awk '{print $3}' | sort) <(sort "$names") \
        && echo "exports match the catalogue ($(wc -l <"$names") names)";;
imports)
    if readelf -d "$lib" | grep -q NEEDED; then readelf -d "$lib" | grep NEEDED; exit 1; fi
    if nm -D --undefined-only "$lib" | grep -q .; then nm -D --undefined-only "$lib"; exit 1; fi
    echo "no NEEDED entry, no undefined symbol";;
isa)
    # SSE2 and later: double-precision packed/scalar forms, 128-bit integer forms,
    # conversions involving doubles, and the SSE2 fences and non-temporal moves.
    pat='\b(movapd|movupd|movsd|movhpd|movlpd|movmskpd|movq|movd|movdq[au]|movdq2q|movq2dq|movnti|movntpd|movntdq|maskmovdqu|[a-z]+pd|[a-z]+sd|cvt[a-z0-9]*(sd|pd|dq)[a-z0-9]*|p[a-z0-9]+|punpck[a-z]+|pshuf[dhlw]+|lfence|mfence|clflush)\b[^;]*%xmm'
    hits=$(objdump -d --no-show-raw-insn "$lib" | grep -E '%xmm' | grep -Ev '\b(prefetch[a-z0-9]*)\b' | grep -E "$pat")
    hits2=$(objdump -d --no-show-raw-insn "$lib" | grep -E '\b(lfence|mfence|clflush|movnti)\b')
    if [ -n "$hits$hits2" ]; then echo "$hits$hits2" | head -20; exit 1; fi
    echo "no SSE2 instruction";;
state)
    # Nothing a call could leave for the next one or share between threads: the only
    # writable sections are those the loader fills in, and the relocated constants,
    # which turn read-only once loaded (RELRO).
    hits=$(readelf -SW "$lib" | sed -E 's/^\s*\[\s*[0-9]+\]//' |
           awk '$7 ~ /W/ && $1 !~ /^\.(data\.rel\.ro|dynamic|got|got\.plt)$/ && $5 !~ /^0+$/ {print $1, $5}')
    if [ -n "$hits" ]; then echo "writable sections: $hits"; exit 1; fi
    readelf -lW "$lib" | grep -q GNU_RELRO || { echo "no RELRO segment"; exit 1; }
    echo "no writable data";;
esac
