#!/usr/bin/env python3
"""Static cost of the hot loop of exported functions, for machines that cannot run them.

    bench/mca.py [--lib build/i386/libvorxa6.so] [--cpus znver3,skylake,znver2]
                 [--loop N] [--per N] [--inner N,...] [--show] [--list] FUNCTION...

Disassembles FUNCTION from the library, takes its largest loop (the span of its
largest backward branch; --loop N picks the N-th largest instead), and runs llvm-mca
on that body as a steady-state loop for each processor model. Prints, per function,
the instructions of the loop, how many of them are integer work (neither SSE nor x87
nor a load or store of data), and llvm-mca's cycles per iteration on each model;
--per N divides by the objects one iteration computes; --inner N[,M...] writes out
the inner loops of N, M... turns (fixed-size loops left rolled), in address order;
their branches stay in the body, taken as not taken. --show prints the body; --list
lists the loops (a function with a dense pass has it beside its object loop).

The i386 library is the product; this is how its loops are judged where the machine
cannot run 32-bit programs (bench/README.md).
"""
import argparse
import re
import subprocess
import sys

NOPS = re.compile(r"^(nop|xchg\s+%ax,%ax|lea\s+0x0\(%[a-z]+(,%eiz,1)?\),%[a-z]+|data16|cs nop|.*%eiz.*)")
BRANCH = re.compile(r"^(j[a-z]+)\s+([0-9a-f]+)\s+<")
LINE = re.compile(r"^\s*([0-9a-f]+):\s+(.*)$")


CALL = re.compile(r"^call\s+[0-9a-f]+\s+<([^>@+]+)>")


def disassemble(lib, fn):
    out = subprocess.run(["objdump", "-d", "--no-show-raw-insn", "--disassemble=" + fn, lib],
                         check=True, capture_output=True, text=True).stdout
    insns = []
    for line in out.splitlines():
        m = LINE.match(line)
        if m:
            insns.append((int(m.group(1), 16), m.group(2).split("#")[0].strip()))
    if not insns:
        sys.exit("mca: %s not found in %s" % (fn, lib))
    return insns


def loops(insns):
    """(start, end) index pairs of backward branches, largest first."""
    index = {a: n for n, (a, _) in enumerate(insns)}
    found = []
    for n, (a, text) in enumerate(insns):
        m = BRANCH.match(text)
        if m and int(m.group(2), 16) <= a and int(m.group(2), 16) in index:
            start = index[int(m.group(2), 16)]
            # a span that holds a return is a jump back from code laid out after the
            # function's exit (set-up or a last stage), not a loop: taken last
            exits = any(t.startswith("ret") for _, t in insns[start:n])
            if not (exits and m.group(1) == "jmp"):
                found.append((exits, start, n))
    return [(s, e) for _, s, e in sorted(found, key=lambda p: (p[0], p[1] - p[2]))]


def body(insns, start, end, inner=()):
    """The loop as assembly llvm-mca reads: branches to labels, padding dropped. Inner
    loops with fixed trip counts (`inner`, in address order) are written out."""
    lines = [".Lloop:"]
    nested = sorted((s, e) for s, e in loops(insns) if start < s and e < end)
    outer = [(s, e) for s, e in nested if not any(s2 < s and e <= e2 for s2, e2 in nested)]
    span, at = [], start
    for (s, e), times in zip(outer, inner):
        span += list(range(at, s)) + list(range(s, e)) * (times - 1) + list(range(s, e + 1))
        at = e + 1
    span += list(range(at, end + 1))
    for a, text in (insns[n] for n in span):
        if NOPS.match(text):
            continue
        m = BRANCH.match(text)
        if m:
            target = int(m.group(2), 16)
            label = ".Lloop" if target == insns[start][0] else ".Lout"
            text = "%s %s" % (m.group(1), label)
        lines.append("\t" + text)
    lines.append(".Lout:")
    return lines


def integer_work(text):
    op = text.split()[0]
    if "%xmm" in text or op.startswith("f") or op.startswith("j"):
        return False
    # Moves of data between memory and general registers that only copy elements
    # (the 64f forms) are counted as integer work too: they are what the loop pays.
    return True


def mca(asm, cpu):
    out = subprocess.run(["llvm-mca", "-mtriple=i386-linux-gnu", "-mcpu=" + cpu, "-iterations=200"],
                         input="\n".join(asm) + "\n", check=True, capture_output=True, text=True).stdout
    it = int(re.search(r"Iterations:\s+(\d+)", out).group(1))
    cycles = int(re.search(r"Total Cycles:\s+(\d+)", out).group(1))
    return cycles / it


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("functions", nargs="+")
    ap.add_argument("--lib", default="build/i386/libvorxa6.so")
    ap.add_argument("--cpus", default="znver3,skylake,znver2")
    ap.add_argument("--loop", type=int, default=1)
    ap.add_argument("--per", type=float, default=1)
    ap.add_argument("--inner", default="",
                    help="trip counts of the inner loops in address order, e.g. 6,3")
    ap.add_argument("--show", action="store_true")
    ap.add_argument("--list", action="store_true", help="list the loops, largest first, and stop")
    args = ap.parse_args()
    cpus = args.cpus.split(",")
    print("| function | loop insns | integer | %s |" % " | ".join("%s cycles" % c for c in cpus))
    print("|---|---|---|%s" % ("---|" * len(cpus)))
    for fn in args.functions:
        insns = disassemble(args.lib, fn)
        found = loops(insns)
        # an exported function may hand the whole call to a local body: follow it
        seen = {fn}
        while not found:
            callees = [m.group(1) for _, t in insns for m in [CALL.match(t)] if m]
            if len(callees) != 1 or callees[0] in seen:
                break
            seen.add(callees[0])
            insns = disassemble(args.lib, callees[0])
            found = loops(insns)
        if args.list:
            for n, (a, b) in enumerate(found, 1):
                print("| %s | loop %d at %x: %d instructions |" % (fn, n, insns[a][0], b - a + 1))
            continue
        if len(found) < args.loop:
            print("| %s | no loop | | %s" % (fn, "| " * len(cpus)))
            continue
        start, end = found[args.loop - 1]
        asm = body(insns, start, end, [int(t) for t in args.inner.split(",") if t])
        code = [l.strip() for l in asm if not l.startswith(".L")]
        per = args.per
        ints = sum(integer_work(t) for t in code)
        cyc = [mca(asm, c) / per for c in cpus]
        print("| %s | %s | %s | %s |" % (fn, "%g" % (len(code) / per), "%g" % (ints / per),
                                         " | ".join("%.2f" % c for c in cyc)))
        if args.show:
            print("\n".join(asm))


if __name__ == "__main__":
    main()
