#!/usr/bin/env python3
"""Turns the JSON of one benchmark run into a Markdown report and an SVG plot.

    report.py --build KIND RESULTS.json FLOOR.json [--build KIND ...] [--untimed KIND]
              --report REPORT.md --plot PLOT.svg [--command "how the run was made"]

One --build per timed build (i386 first where it was timed): the Google Benchmark
JSON of vorx_bench and the JSON of vorx_floor. --untimed names a build this machine
could not time. Times are CPU time per object: the median over the repetitions of
each benchmark, with the spread as half the range between the fastest and the
slowest repetition, relative to the median. Ratios compare kernels of the same build
and run only.
"""
import argparse
import html
import json
import math
import statistics
from collections import defaultdict

PEERS = ["vorx", "plain -O2", "plain -O3", "Eigen", "LAPACK", "BLAS"]
LAYOUTS = ["Contiguous", "Strided", "Pointer", "List"]
COLOURS = {"vorx": "#c0392b", "plain -O2": "#7f8c8d", "plain -O3": "#34495e",
           "Eigen": "#2980b9", "LAPACK": "#27ae60", "BLAS": "#27ae60"}

# Targets at 1,000 objects, Contiguous: (operation id, what, best peer when the goal
# was set, goal for vorx in ns per object or None for "faster than that peer").
TARGETS = [
    ("add_v3_32f", "3-vector add 32f", "plain -O3 0.76", 0.5),
    ("dot_v4_32f", "4-vector dot 32f", "Eigen 1.4", 0.7),
    ("mul_mv_4x4_32f", "4x4 by 4-vector 32f", "Eigen 5.5", 2.3),
    ("mul_mama_3x3_32f", "3x3 by 3x3 32f", "Eigen 7.5", 3.4),
    ("mul_mama_4x4_32f", "4x4 by 4x4 32f", "plain -O3 10.9", 5.5),
    ("mul_mama_6x6_32f", "6x6 by 6x6 32f", "plain -O3 53", 23),
    ("invert_4x4_32f", "4x4 inverse 32f", "Eigen 38", 12),
    ("det_4x4_32f", "4x4 determinant 32f", "Eigen 7.1", None),
    ("chol_4x4_32f", "4x4 Cholesky 32f", "plain -O3 20", None),
    ("lu_solve_6x6_64f", "6x6 LU solve 64f", "plain -O3 189", 150),
]
GOALS = {t[0]: t[3] for t in TARGETS}


def load(path):
    with open(path) as f:
        data = json.load(f)
    times = defaultdict(list)  # (op, layout, peer, n) -> [ns per object]
    titles = {}
    order = []
    for b in data["benchmarks"]:
        if b.get("run_type") != "iteration":
            continue
        name = b.get("run_name", b["name"])
        op, lay, peer, n = name.split("/")[:4]
        n = int(n)
        scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[b.get("time_unit", "ns")]
        times[(op, lay, peer, n)].append(b["cpu_time"] * scale / n)
        titles[op] = b.get("label", op)
        if (op, lay) not in order:
            order.append((op, lay))
    order.sort(key=row_key)
    return data.get("context", {}), times, titles, order


FAMILY_ORDER = ["add_v", "add_m", "mul_", "lu_"]


def row_key(row):
    op, lay = row
    fam = next((i for i, p in enumerate(FAMILY_ORDER) if op.startswith(p)), len(FAMILY_ORDER))
    return (fam, op.replace("_layouts", ""), LAYOUTS.index(lay) if lay in LAYOUTS else 9)


def summary(samples):
    med = statistics.median(samples)
    spread = (max(samples) - min(samples)) / 2 / med * 100 if med > 0 else 0.0
    return med, spread


def fmt(ns):
    if ns >= 100:
        return "%.0f" % ns
    if ns >= 10:
        return "%.1f" % ns
    return "%.2f" % ns


def rows_for(times, order, n):
    rows = []
    for op, lay in order:
        cells = {}
        for peer in PEERS:
            s = times.get((op, lay, peer, n))
            if s:
                cells[peer] = summary(s)
        if cells:
            rows.append((op, lay, cells))
    return rows


def best_peer(cells):
    peers = [(m, p) for p, (m, _) in cells.items() if p != "vorx"]
    return min(peers) if peers else None


def table(rows, titles, sizes_note):
    present = [p for p in PEERS if any(p in c for _, _, c in rows)]
    head = ["operation", "layout"] + present + ["best peer", "vorx ÷ best", "goal (vorx)"]
    out = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    for op, lay, cells in rows:
        line = [titles.get(op, op), lay]
        for p in present:
            if p in cells:
                m, s = cells[p]
                line.append("%s ±%.0f%%" % (fmt(m), s))
            else:
                line.append("–")
        bp = best_peer(cells)
        line.append("%s (%s)" % (bp[1], fmt(bp[0])) if bp else "–")
        if bp and "vorx" in cells:
            line.append("**%.2f**" % (cells["vorx"][0] / bp[0]))
        else:
            line.append("not built yet" if bp else "–")
        goal = GOALS.get(op)
        line.append("≤ %s" % fmt(goal) if goal and lay == "Contiguous" else "–")
        out.append("| " + " | ".join(line) + " |")
    out.append("")
    out.append(sizes_note)
    return "\n".join(out)


def floor_of(floor, op, lay):
    """The floor probe's ns per object for a row, or None."""
    found = [p["ns"] for p in floor.get("probes", []) if p["op"] == op.replace("_layouts", "")
             and lay in p["layouts"]]
    return min(found) if found else None


def side_by_side(builds, n):
    """One row per operation and layout; per build vorx, best peer, and the floor."""
    head = ["operation", "layout"]
    for b in builds:
        k = b["kind"]
        head += ["%s vorx" % k, "%s best peer" % k, "%s ÷ best" % k, "%s floor" % k, "%s ÷ floor" % k]
    out = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    order = []
    for b in builds:
        for row in b["order"]:
            if row not in order:
                order.append(row)
    order.sort(key=row_key)
    titles = {}
    for b in builds:
        titles.update(b["titles"])
    for op, lay in order:
        line = [titles.get(op, op), lay]
        present = False
        for b in builds:
            cells = {p: summary(s)[0] for (o, l, p, m), s in b["times"].items()
                     if o == op and l == lay and m == n}
            present = present or bool(cells)
            v = cells.get("vorx")
            peers = [(m, p) for p, m in cells.items() if p != "vorx"]
            bp = min(peers) if peers else None
            fl = floor_of(b["floor"], op, lay)
            line.append(fmt(v) if v is not None else "–")
            line.append("%s (%s)" % (bp[1], fmt(bp[0])) if bp else "–")
            line.append("**%.2f**" % (v / bp[0]) if v is not None and bp else "–")
            line.append(fmt(fl) if fl else "–")
            line.append("%.2f" % (v / fl) if v is not None and fl else "–")
        if present:
            out.append("| " + " | ".join(line) + " |")
    return "\n".join(out)


def targets_table(builds):
    head = ["target", "best peer when set", "goal"]
    for b in builds:
        head += ["%s best peer" % b["kind"], "%s vorx" % b["kind"], "%s status" % b["kind"]]
    out = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    for op, what, then, goal in TARGETS:
        goal_text = "≤ %s" % fmt(goal) if goal else "faster than %s" % then.rsplit(" ", 1)[0]
        line = [what, then, goal_text]
        for b in builds:
            cells = {p: summary(s)[0] for (o, lay, p, n), s in b["times"].items()
                     if o == op and lay == "Contiguous" and n == 1000}
            peers = [(m, p) for p, m in cells.items() if p != "vorx"]
            bp = min(peers) if peers else None
            v = cells.get("vorx")
            if not cells:
                status = "not benchmarked yet (family not built)"
            elif v is None:
                status = "vorx rows not built yet"
            else:
                limit = goal if goal else bp[0] if bp else None
                met = limit is not None and (v <= limit if goal else v < limit)
                status = "met" if met else "not yet"
            line += ["%s %s" % (bp[1], fmt(bp[0])) if bp else "–", fmt(v) if v is not None else "–", status]
        out.append("| " + " | ".join(line) + " |")
    return "\n".join(out)


def floor_table(b):
    f = b["floor"]
    out = ["Clock while probing: %.2f GHz (a chain of dependent integer adds)." % f.get("ghz", 0), ""]
    if not f.get("avx", False):
        out.append("The product probes need AVX encodings, which this processor lacks: not measured.")
        out.append("")
    out += ["| row | layouts it bounds | work per object | cycles | ns |", "|---|---|---|---|---|"]
    for p in f.get("probes", []):
        out.append("| %s | %s | %s | %.1f | %s |" % (b["titles"].get(p["op"], p["op"]),
                                                     ", ".join(p["layouts"]) or "–", p["what"],
                                                     p["cycles"], fmt(p["ns"])))
    return "\n".join(out)


def plot(rows, titles, path, n, kind):
    """Horizontal bars of ns per object on a log scale, one group per row."""
    present = [p for p in PEERS if any(p in c for _, _, c in rows)]
    values = [m for _, _, c in rows for (m, _) in c.values()]
    if not values:
        values = [1.0]
    lo = 10 ** math.floor(math.log10(min(values)))
    hi = 10 ** math.ceil(math.log10(max(values)))
    if hi <= lo:
        hi = lo * 10
    bar, gap, left, width = 9, 10, 260, 560
    height = 60 + sum(len(c) * bar + gap for _, _, c in rows) + 40
    x = lambda v: left + (math.log10(v) - math.log10(lo)) / (math.log10(hi) - math.log10(lo)) * width
    svg = ['<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d" font-family="sans-serif" '
           'font-size="11">' % (left + width + 130, height),
           '<rect width="100%" height="100%" fill="white"/>',
           '<text x="10" y="18" font-size="14">vorx and peers, %s build: CPU ns per object at %d objects '
           '(log scale; shorter is faster)</text>' % (html.escape(kind), n)]
    decade = lo
    while decade <= hi * 1.0001:
        svg.append('<line x1="%.1f" y1="40" x2="%.1f" y2="%d" stroke="#ddd"/>' % (x(decade), x(decade), height - 30))
        svg.append('<text x="%.1f" y="%d" text-anchor="middle">%g</text>' % (x(decade), height - 15, decade))
        decade *= 10
    y = 50
    for op, lay, cells in rows:
        label = "%s, %s" % (titles.get(op, op), lay)
        group = len(cells) * bar
        svg.append('<text x="%d" y="%.1f" text-anchor="end" dominant-baseline="middle">%s</text>'
                   % (left - 8, y + group / 2, html.escape(label)))
        for p in present:
            if p not in cells:
                continue
            m = cells[p][0]
            svg.append('<rect x="%d" y="%d" width="%.1f" height="%d" fill="%s"><title>%s: %s ns</title></rect>'
                       % (left, y, max(x(m) - left, 1), bar - 1, COLOURS[p], html.escape(p), fmt(m)))
            y += bar
        goal = GOALS.get(op)
        if goal and lay == "Contiguous":
            svg.append('<line x1="%.1f" y1="%d" x2="%.1f" y2="%d" stroke="#c0392b" stroke-dasharray="3,2"/>'
                       % (x(goal), y - group, x(goal), y))
        y += gap
    ly = 50
    for p in present:
        svg.append('<rect x="%d" y="%d" width="12" height="10" fill="%s"/>' % (left + width + 15, ly, COLOURS[p]))
        svg.append('<text x="%d" y="%d">%s</text>' % (left + width + 32, ly + 9, html.escape(p)))
        ly += 16
    svg.append('<line x1="%d" y1="%d" x2="%d" y2="%d" stroke="#c0392b" stroke-dasharray="3,2"/>'
               % (left + width + 15, ly + 5, left + width + 27, ly + 5))
    svg.append('<text x="%d" y="%d">goal for vorx</text>' % (left + width + 32, ly + 9))
    svg.append("</svg>")
    with open(path, "w") as f:
        f.write("\n".join(svg) + "\n")


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--build", nargs=3, action="append", metavar=("KIND", "RESULTS", "FLOOR"),
                    required=True)
    ap.add_argument("--untimed", action="append", default=[])
    ap.add_argument("--report", required=True)
    ap.add_argument("--plot", required=True)
    ap.add_argument("--command", default="")
    args = ap.parse_args()
    builds = []
    for kind, results, floor in args.build:
        ctx, times, titles, order = load(results)
        with open(floor) as f:
            fl = json.load(f)
        builds.append({"kind": kind, "ctx": ctx, "times": times, "titles": titles, "order": order,
                       "floor": fl})
    first = builds[0]
    sizes = sorted({k[3] for b in builds for k in b["times"]})
    reps = max((len(v) for b in builds for v in b["times"].values()), default=0)
    md = ["# vorx benchmarks", ""]
    for b in builds:
        md.append("- %s build timed: %s; compiled with `%s` (peers with the same target flags; plain "
                  "loops at -O2 and at -O3, Eigen at -O3, LAPACK/BLAS are the system's reference "
                  "libraries). Result check before timing: %s." % (
                      b["kind"], b["ctx"].get("vorx_target", "?"),
                      b["ctx"].get("vorx_flags", "?").strip(), b["ctx"].get("vorx_checks", "?")))
    for kind in args.untimed:
        md.append("- %s build not timed: this machine cannot run 32-bit programs. Its loops can "
                  "be read statically with `bench/mca.py` (see bench/README.md)." % kind)
    ctx = first["ctx"]
    md.append("- Machine: %s (%s), %s CPUs at %s MHz; run at %s. Google Benchmark %s build." % (
        ctx.get("host_name", "?"), ctx.get("vorx_cpu", "?"), ctx.get("num_cpus", "?"),
        ctx.get("mhz_per_cpu", "?"), ctx.get("date", "?"), ctx.get("library_build_type", "?")))
    md.append("- Statistics: %d repetitions of each benchmark in random interleaved order; each cell "
              "is the median CPU time per object in ns, ± half the range of the repetitions relative "
              "to the median. The machine is shared: compare ratios within one build of this run "
              "only." % reps)
    md.append("- ÷ best: vorx's median over the fastest peer's of the same build in the same row "
              "(below 1: vorx faster). Floor: the least time per object that this processor allows "
              "for the work of the row's scheme, measured by `vorx_floor` in the same build (end "
              "of the report); ÷ floor: how far vorx is above it.")
    if args.command:
        md.append("- Command: `%s`" % args.command)
    md.append("")
    for n in sizes:
        md.append("## %s objects, %s" % (format(n, ","), " and ".join(b["kind"] for b in builds)))
        md.append("")
        md.append(side_by_side(builds, n))
        md.append("")
    for b in builds:
        for n in sizes:
            md.append("## %s objects, all peers, %s build" % (format(n, ","), b["kind"]))
            md.append("")
            md.append(table(rows_for(b["times"], b["order"], n), b["titles"],
                            "Rows marked *not built yet* have their peers measured; the vorx row "
                            "appears once the library exports that family."))
            md.append("")
    md.append("## Targets (1,000 objects, Contiguous, ns per object)")
    md.append("")
    md.append(targets_table(builds))
    md.append("")
    for b in builds:
        md.append("## Floors of the probed schemes, %s build" % b["kind"])
        md.append("")
        md.append(floor_table(b))
        md.append("")
    sizes1 = sorted({k[3] for k in first["times"]})
    plot_n = 1000 if 1000 in sizes1 else (sizes1[0] if sizes1 else 1000)
    plot(rows_for(first["times"], first["order"], plot_n), first["titles"], args.plot, plot_n,
         first["kind"])
    md.append("Plot (%s build): `%s`" % (first["kind"], args.plot))
    with open(args.report, "w") as f:
        f.write("\n".join(md) + "\n")


if __name__ == "__main__":
    main()
