#!/usr/bin/python3
"""vorx from Python against NumPy's batched calls, on batches of 10^3 to 10^6 objects.

    PYTHONPATH=python bench/python_bench.py [--quick] [--out DIR]

Times the whole Python call of each side (best of a few runs, wall time: run it on a
quiet machine), for the matrix product (`numpy.matmul`), solving one right side
(`numpy.linalg.solve` against LU decomposition and back substitution), the
determinant, the inverse and the Cholesky factor, at 3x3, 4x4 and 6x6 in float32 and
float64.
Writes `python.md` (a table with the ratio NumPy / vorx: above 1 vorx is faster) and
`python.svg` into DIR (default build/native/report).
"""
import argparse
import os
import time

import numpy as np

import vorx

OPS = {
    "matmul": (lambda a, b: np.matmul(a, a), lambda a, b: vorx.mul(a, a)),
    "solve": (lambda a, b: np.linalg.solve(a, b[..., None]),
              lambda a, b: vorx.lu_back_subst(*vorx.lu_decomp(a), b)),
    "det": (lambda a, b: np.linalg.det(a), lambda a, b: vorx.det(a)),
    "inverse": (lambda a, b: np.linalg.inv(a), lambda a, b: vorx.invert(a)),
    "cholesky": (lambda a, b: np.linalg.cholesky(a), lambda a, b: vorx.cholesky_decomp(a)),
}


def best(fn, a, b, reps):
    times = []
    for _ in range(reps):
        t = time.perf_counter()
        fn(a, b)
        times.append(time.perf_counter() - t)
    return min(times)


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--quick", action="store_true")
    ap.add_argument("--out", default=os.path.join(os.path.dirname(__file__), "..", "build", "native", "report"))
    opt = ap.parse_args()
    batches = [10 ** 3, 10 ** 4] if opt.quick else [10 ** 3, 10 ** 4, 10 ** 5, 10 ** 6]
    reps = 3 if opt.quick else 5
    rng = np.random.default_rng(1)
    rows = []
    for n in (3, 4, 6):
        for dt in (np.float32, np.float64):
            for k in batches:
                x = rng.uniform(-1, 1, (k, n, n))
                a = (x @ np.swapaxes(x, 1, 2) + n * np.eye(n)).astype(dt)   # positive definite
                b = rng.uniform(-1, 1, (k, n)).astype(dt)
                for op, (ref, ours) in OPS.items():
                    tn, tv = best(ref, a, b, reps), best(ours, a, b, reps)
                    rows.append((op, n, np.dtype(dt).name, k, tn / k * 1e9, tv / k * 1e9))
                    print("%-8s %dx%d %-7s %8d  numpy %8.1f ns  vorx %8.1f ns  x%.1f"
                          % (op, n, n, np.dtype(dt).name, k, rows[-1][4], rows[-1][5], tn / tv), flush=True)
    os.makedirs(opt.out, exist_ok=True)
    with open(os.path.join(opt.out, "python.md"), "w") as fh:
        fh.write("# vorx from Python against NumPy\n\nWall time per object of the whole Python call "
                 "(best of %d), library `%s`. Ratio: NumPy time / vorx time.\n\n" % (reps, vorx.library_path))
        fh.write("| operation | size | type | objects | NumPy ns | vorx ns | ratio |\n|---|---|---|---|---|---|---|\n")
        for op, n, t, k, tn, tv in rows:
            fh.write("| %s | %dx%d | %s | %d | %.1f | %.1f | %.1f |\n" % (op, n, n, t, k, tn, tv, tn / tv))
    with open(os.path.join(opt.out, "python.svg"), "w") as fh:
        fh.write(svg(rows, batches))
    print("report: %s" % os.path.abspath(os.path.join(opt.out, "python.md")))


def svg(rows, batches):
    """Ratio NumPy/vorx at the largest batch, one bar per operation, size and type."""
    big = [r for r in rows if r[3] == batches[-1]]
    top = max(max(r[4] / r[5] for r in big), 1.0)
    w, h, bw = 60 + 22 * len(big), 260, 18
    out = ['<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d" font-size="9">' % (w, h + 90)]
    y1 = h - 200 / top
    out.append('<line x1="40" x2="%d" y1="%.1f" y2="%.1f" stroke="red"/>' % (w, y1, y1))
    out.append('<text x="2" y="%.1f">x1</text><text x="2" y="12">x%.1f</text>' % (y1, top))
    for i, (op, n, t, k, tn, tv) in enumerate(big):
        x, bh = 44 + 22 * i, 200 * (tn / tv) / top
        out.append('<rect x="%d" y="%.1f" width="%d" height="%.1f" fill="%s"/>'
                   % (x, h - bh, bw, bh, "#4a7" if t == "float32" else "#47a"))
        out.append('<text transform="translate(%d,%d) rotate(60)">%s %dx%d %s</text>' % (x + 4, h + 4, op, n, n, t[5:]))
    out.append('<text x="44" y="%d">NumPy time / vorx time at %d objects</text></svg>\n' % (h + 85, batches[-1]))
    return "\n".join(out)


if __name__ == "__main__":
    main()
