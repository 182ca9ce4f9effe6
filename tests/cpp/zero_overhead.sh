#!/usr/bin/env bash
# Compiles pairs hpp_<n>/c_<n> (a call through vorx.hpp and the same C call written
# out) and requires the same instructions of both (relocations by name, alignment
# padding left out).
set -eu
src=$1; shift
obj=$(mktemp --suffix=.o); trap 'rm -f "$obj"' EXIT
"$@" -c "$src" -o "$obj"
body() {  # the instructions of one function, without addresses and encodings
    objdump -dr --no-show-raw-insn "$obj" | awk -v f="<$1>:" '
        $2 == f { on = 1; next }
        on && /^$/ { exit }
        on { sub(/^[ \t]*[0-9a-f]+:[ \t]*/, ""); gsub(/[0-9a-f]+ <[^>]*>/, "<>"); print }' |
        grep -vE '^(nop|xchg +%ax,%ax|data16|lea +0x0\(%[er]si,%[er]iz,1\),%[er]si|cs nop)'  # alignment padding
}
pairs=0 fail=0
for n in $(objdump -t "$obj" | grep -o 'hpp_[0-9]*' | sort -u | sed 's/hpp_//'); do
    pairs=$((pairs + 1))
    a=$(body "hpp_$n") b=$(body "c_$n")
    if [ -z "$a" ] || [ "$a" != "$b" ]; then
        echo "pair $n differs:"; diff <(echo "$a") <(echo "$b") || true; fail=1
    fi
done
echo "$pairs pairs compared"
[ "$pairs" -gt 0 ] && exit $fail
