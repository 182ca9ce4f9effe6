#!/usr/bin/env bash
# Installs what the build, the tests and the benchmarks need: the i386 toolchain and
# libraries, the emulator for machines that cannot run 32-bit programs, the peers of
# the benchmarks, clang with its sanitizer run-times for the fuzzer, and valgrind with
# the i386 C library's symbols, python3-markdown for the HTML manual, and NumPy,
# pytest and Dask for the Python package (modules of the system interpreter,
# /usr/bin/python3). Safe to run again; does nothing when all is there.
set -eu
packages=(g++-multilib cmake pkg-config python3 qemu-user libgtest-dev libgtest-dev:i386
          libbenchmark-dev libbenchmark-dev:i386 libeigen3-dev liblapack-dev liblapack-dev:i386
          clang libclang-rt-14-dev valgrind libc6-dbg:i386 python3-markdown
          python3-numpy python3-pytest python3-dask python3-distributed)
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
# The Python package of this tree, for the system interpreter whose NumPy and Dask
# these are: a path file in its site directory (it finds build/native beside it).
tree=$(cd "$(dirname "$0")/.." && pwd)
python_package() {
    local site pth
    site=$(/usr/bin/python3 -c 'import site; print(site.getsitepackages()[0])' 2>/dev/null) || return 0
    pth="$site/vorx-tree.pth"
    [ "$(cat "$pth" 2>/dev/null)" = "$tree/python" ] && return 0
    $sudo mkdir -p "$site" && echo "$tree/python" | $sudo tee "$pth" >/dev/null || true
}
[ ${#missing[@]} -eq 0 ] && { python_package; exit 0; }
echo "installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
dpkg --print-foreign-architectures | grep -qx i386 || $sudo dpkg --add-architecture i386
# One index failing (a mirror in sync) must not stop the set-up.
$sudo apt-get update -q || true
$sudo apt-get install -y -q --no-install-recommends "${missing[@]}" </dev/null
python_package
