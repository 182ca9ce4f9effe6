#!/usr/bin/env bash
# Compiles each case of a file of wrong calls (CASE=1..), which must fail with the
# message its `// expect:` line names; CASE=0, the right calls, must compile.
set -u
src=$1; shift
out=$(mktemp); trap 'rm -f "$out"' EXIT
fail=0
"$@" -fsyntax-only -Wall -Wextra -pedantic-errors -Werror -DCASE=0 "$src" >"$out" 2>&1 || { echo "the right calls do not compile:"; cat "$out"; exit 1; }
n=0
while IFS= read -r line; do
    n=$((n + 1))
    want=${line#*expect: }
    if "$@" -fsyntax-only -Werror=unused-result -DCASE=$n "$src" >"$out" 2>&1; then
        echo "case $n compiled: $want"; fail=1
    elif ! grep -qF -- "$want" "$out"; then
        echo "case $n failed without \"$want\":"; grep -m3 error "$out"; fail=1
    fi
done < <(grep -o '// expect: .*' "$src")
echo "$n wrong combinations checked"
exit $fail
