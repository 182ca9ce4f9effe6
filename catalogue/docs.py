"""The reference manual under docs/, generated from the catalogue and behaviours.py.

docs/index.md (the families, the statuses, the C++ interface), docs/layouts.md with
its pictures (layout-*.svg), and one page per family: every name, the argument list
of each operand code in each layout, sizes, statuses and behaviours.
"""
import os
from collections import OrderedDict

from behaviours import COMMON, FAMILIES, STATUS_TEXT
from generate import PAIR_LETTER, TYPES, _write_if_changed, catalogue
import cpp

LAYOUT_NAMES = OrderedDict([("", "Contiguous"), ("S2", "Strided"), ("P", "Pointer"),
                            ("PS2", "Pointer-strided"), ("L", "List"), ("LS2", "List-strided")])
LETTERS = {"S": "Strided", "P": "Pointer-strided", "L": "List-strided"}


def page_name(family):
    return family.lower() + ".md"


def _layout_text(layout):
    if layout in LAYOUT_NAMES:
        return LAYOUT_NAMES[layout]
    return " to ".join(LETTERS[c] for c in layout)


def _families():
    """family -> list of (row, code, [functions]) in table order, built rows only."""
    fams = OrderedDict()
    for form in cpp.forms():
        fams.setdefault(form.row["family"], []).append(form)
    return fams


def family_page(family, forms):
    b = FAMILIES[family]
    fs = [f for form in forms for f in form.functions]
    out = ["# %s\n\n" % b["title"], "[Index](index.md) · [Layouts](layouts.md)\n\n",
           "%d names. " % len(fs)]
    st = b["statuses"]
    out.append("Statuses: 0" + "".join(", " + STATUS_TEXT[s] for s in st) + ".\n\n")
    out.append("## Behaviour\n\n")
    out += ["- %s\n" % line for line in b["lines"]]
    out.append("\nAs in every family:\n\n")
    out += ["- %s\n" % line for line in COMMON]
    for form in forms:
        f0 = form.functions[0]
        out.append("\n## `%s` (%s)\n\n" % (form.code, ", ".join(
            "%s %s" % (s.name, s.kind) for s in form.slots)))
        op = "vorx::%s(%s)" % (form.op, ", ".join(s.name for s in form.slots))
        sizes = sorted({f.size for f in form.functions if f.size})
        generic = any(not f.size for f in form.functions)
        out.append("C++: `%s`. Element types: %s. Sizes: %s.\n\n" % (
            op, " and ".join(TYPES[t] for t in sorted({f.tname for f in form.functions})),
            ", ".join(sizes + (["any (run-time arguments)"] if generic else []))))
        # The argument list of each layout, for the first type and size listed.
        out.append("| Layout | Arguments |\n|---|---|\n")
        seen = set()
        for f in form.functions:
            if f.tname != f0.tname or f.size != f0.size or f.layout in seen:
                continue
            seen.add(f.layout)
            args = ", ".join("%s %s" % (p.ctype, p.name) for p in f.params)
            out.append("| %s | `%s %s(%s)` |\n" % (_layout_text(f.layout), f.ret, f.name, args))
        out.append("\nEvery name:\n\n```\n")
        line, key = [], None
        for f in form.functions:
            k = (f.tname, f.size)
            if k != key and line:
                out.append(" ".join(line) + "\n")
                line = []
            key = k
            line.append(f.name)
        out.append(" ".join(line) + "\n```\n")
    return "".join(out)


INDEX_TOP = """\
# vorx reference manual

Small-matrix and small-vector mathematics for 32-bit x86 with SSE. Every operation is
a plain C function whose name spells the operation, the operand kinds, the element
type, the fixed size and the layout:

    vorx<Op>_<operands>_<type>[_<W>x<H>][_<layout>]

Operand codes: `v` vector, `va` array of vectors, `m` matrix, `ma` array of matrices,
`mT`/`maT` read transposed, `c` a constant. How each layout finds an element is on
the [layouts page](layouts.md). Generated from `catalogue/table.py` and
`catalogue/behaviours.py` by `catalogue/generate.py docs docs`; rendered to HTML by
`python3 catalogue/generate.py html docs build/docs-html`.

## Statuses

| Value | C | C++ | exception of `vorx::checked::` |
|---|---|---|---|
| 0 | `vorxStatusOk` | `vorx::status::ok` | |
| -6 | `vorxStatusBadSize` | `vorx::status::bad_size` | `vorx::bad_size` |
| -8 | `vorxStatusNullPointer` | `vorx::status::null_pointer` | `vorx::null_pointer` |
| -10 | `vorxStatusZeroDivide` | `vorx::status::zero_divide` | `vorx::zero_divide` |
| -179 | `vorxStatusNotPositiveDefinite` | `vorx::status::not_positive_definite` | `vorx::not_positive_definite` |

All exceptions derive from `vorx::error` (a `std::runtime_error` with `code()`).

## The C++ interface

`#include <vorx.hpp>` (C++20, header only, installed beside `vorx.h`). Operands are
views over your memory; each carries its element type (const for sources), layout,
size (a template argument, or a run-time argument) and, for arrays, the count:

| Layout | one object | array of objects |
|---|---|---|
| Contiguous | `vec<N>(x)`, `mat<R, C>(x, rowStride)` | `vec_array<N>(x, objectStride, count)`, `mat_array<R, C>(x, objectStride, rowStride, count)` |
| Strided | `vec_strided<N>(x, elemStride)`, `mat_strided<R, C>(x, rowStride, elemStride)` | `vec_array_strided<N>(x, objectStride, elemStride, count)`, `mat_array_strided<R, C>(x, objectStride, rowStride, elemStride, count)` |
| Pointer | `vec_elems<N>(table, byteShift)`, `mat_elems<R, C>(table, byteShift)` | `vec_array_elems<N>(table, byteShift, count)`, `mat_array_elems<R, C>(table, byteShift, count)` |
| Pointer-strided | | `vec_array_elems_strided<N>(table, byteShift, objectStride, count)`, `mat_array_elems_strided<R, C>(...)` |
| List | | `vec_list<N>(list, byteShift, count)`, `mat_list<R, C>(list, byteShift, rowStride, count)` |
| List-strided | | `vec_list_strided<N>(list, byteShift, elemStride, count)`, `mat_list_strided<R, C>(list, byteShift, rowStride, elemStride, count)` |

Without the template arguments the sizes come first at run time: `vec(x, len)`,
`mat_array(x, rows, cols, objectStride, rowStride, count)`. `mat<R, C>(x)` is a dense
matrix. Adapters: `vec(std::array&)`, `vec(std::span)`, `mat(std::array<std::array>&)`,
`vec_array(std::span<std::array<T, N>>)`, `mat_array(std::span<std::array<std::array<T, C>, R>>)`;
where Eigen is included before `vorx.hpp`, `mat(m)` of a fixed-size `Eigen::Matrix`
(a column-major one is read as the transposed view of what it stores, so it serves
where the operation takes a transposed source) and `vec(v)` of a fixed-size vector.
`transposed(view)` reads a matrix view transposed (the `T` codes).

One function per operation takes the operands in the order of the name's operand
codes, then the destination: `vorx::add(src1, src2, dst)`, `vorx::sub(value, src, dst)`
for `cv`, `vorx::lu_decomp(src, perm, dst)`. It resolves at compile time to the one
exported function for those operand kinds, element type, size and layout: views of a
fixed size choose the fixed-size name where there is one, and the run-time name
otherwise (views of two different fixed sizes do not compile). A run-time size is
taken from the first operand that has it, as the C function takes it once: the
header does not compare the other operands' sizes with it. In calls with an array, a single operand is Contiguous in the Contiguous
and List layouts, Strided in the Strided ones, Pointer in the Pointer ones. A
combination that does not exist fails to compile with the list of what exists. The
result is a `[[nodiscard]] vorx::status`; `vorx::checked::add(...)` throws instead.

```cpp
#include <vorx.hpp>
std::vector<std::array<float, 4>> points(n), moved(n);
std::array<std::array<float, 4>, 4> m = ...;
auto s = vorx::mul(vorx::mat(m), vorx::vec_array(std::span(points)), vorx::vec_array(std::span(moved)));
// the same call as vorxMul_mva_32f_4x4(m[0].data(), 16, points[0].data(), 16, moved[0].data(), 16, n)
```

## Families

| Family | C++ | Names | Statuses besides 0 |
|---|---|---|---|
"""


def index_page(fams):
    out = [INDEX_TOP]
    for family, forms in fams.items():
        b = FAMILIES[family]
        ops = sorted({"`vorx::%s`" % f.op for f in forms})
        n = sum(len(f.functions) for f in forms)
        st = ", ".join(str(STATUS_TEXT[s].split()[0]) for s in b["statuses"]) or "none"
        out.append("| [%s](%s): %s | %s | %d | %s |\n" % (family, page_name(family), b["title"],
                                                          ", ".join(ops), n, st))
    total = sum(len(f.functions) for forms in fams.values() for f in forms)
    out.append("\n%d names in all, and `vorxGetLibVersion`.\n" % total)
    return "".join(out)


LAYOUTS_PAGE = """\
# Layouts

[Index](index.md)

An operand is found in memory by its pointer and the integers behind it in the
argument list; strides and shifts are in bytes and need no alignment. `k` is the
object, `i` the row, `j` the column (a vector is one row); `E` is the element size.

| Layout | suffix | element (k, i, j) at |
|---|---|---|
| Contiguous | none | `x + k*objectStride + i*rowStride + j*E` |
| Strided | `_S2` | `x + k*objectStride + i*rowStride + j*elemStride` |
| Pointer | `_P` | `table[i*width + j] + byteShift + k*E` (width: the stored one) |
| Pointer-strided | `_PS2` | `table[i*width + j] + byteShift + k*objectStride` |
| List | `_L` | `list[k] + byteShift + i*rowStride + j*E` |
| List-strided | `_LS2` | `list[k] + byteShift + i*rowStride + j*elemStride` |

A single operand of a call with arrays has no `k`: it is Contiguous in `_L` calls,
Strided in `_LS2` calls, and a Pointer table read at the same places for every
object in `_P` and `_PS2` calls. A transposed operand (`mT`, `maT`) is stored with
the operation's width as its number of rows; element (i, j) of the operation is
stored element (j, i).

The arguments each operand brings, in order:

| Layout | `v` | `va` | `m` | `ma` |
|---|---|---|---|---|
%s
![Contiguous and Strided](layout-direct.svg)

![Pointer: one pointer per element](layout-elems.svg)

![List: one pointer per object](layout-list.svg)
"""


def layouts_page():
    from generate import _KIND_WORDS, WORD_NAMES
    rows = []
    for lay, name in LAYOUT_NAMES.items():
        cells = []
        for k in ("v", "va", "m", "ma"):
            words = _KIND_WORDS[k][lay].split()
            names = [{"x": "x", "t": "table"}.get(w) or WORD_NAMES[w][0].lower() + WORD_NAMES[w][1:]
                     for w in words]
            cells.append(", ".join(names))
        rows.append("| %s | %s |\n" % (name, " | ".join(cells)))
    return LAYOUTS_PAGE % "".join(rows)


# ---- Pictures: a 2x3 matrix, two objects where the layout has arrays.

def _svg(w, h, body):
    return ('<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d" viewBox="0 0 %d %d" '
            'font-family="monospace" font-size="11">\n<defs><marker id="a" viewBox="0 0 10 10" refX="9" '
            'refY="5" markerWidth="6" markerHeight="6" orient="auto"><path d="M0,0 L10,5 L0,10 z"/>'
            '</marker></defs>\n<rect width="100%%" height="100%%" fill="white"/>\n%s</svg>\n'
            % (w, h, w, h, "".join(body)))


def _cell(x, y, text, fill="#dfe9f5", w=34):
    return ('<rect x="%d" y="%d" width="%d" height="22" fill="%s" stroke="#333"/>'
            '<text x="%d" y="%d" text-anchor="middle">%s</text>\n' % (x, y, w, fill, x + w // 2, y + 15, text))


def _arrow(x1, y1, x2, y2):
    return ('<line x1="%d" y1="%d" x2="%d" y2="%d" stroke="#a33" marker-end="url(#a)"/>\n'
            % (x1, y1, x2, y2))


def _label(x, y, text):
    return '<text x="%d" y="%d">%s</text>\n' % (x, y, text)


def _object(x, y, k):
    """Object k of 2x3 elements, its rows 4 cells apart (one cell of gap)."""
    cells = []
    for i in range(2):
        for j in range(4):
            text, fill = ("%d%d%d" % (k, i, j), "#dfe9f5") if j < 3 else ("", "#eee")
            cells.append(_cell(x + (i * 4 + j) * 36, y, text, fill=fill))
    return "".join(cells)


def svg_direct():
    body = [_label(10, 16, "Contiguous / Strided: x + k*objectStride + i*rowStride + j*elemStride")]
    for k in range(2):
        body.append(_object(10 + k * 8 * 36, 40, k))
    body.append(_arrow(10, 75, 10 + 4 * 36, 75) + _label(40, 90, "rowStride"))
    body.append(_arrow(10, 100, 10 + 8 * 36, 100) + _label(100, 115, "objectStride"))
    body.append(_label(10, 135, "cell kij: object k, row i, column j; grey: bytes the layout skips"))
    return _svg(600, 145, body)


def svg_elems():
    body = [_label(10, 16, "Pointer: table[i*width + j] + byteShift + k*E (Pointer-strided: k*objectStride)")]
    for n in range(6):
        body.append(_cell(10, 30 + n * 26, "t[%d]" % n, fill="#f5e9d0", w=44))
    order = [3, 0, 5, 1, 4, 2]  # elements anywhere in memory
    for n in range(6):
        y = 30 + order[n] * 26
        body.append(_cell(200, y, "0%d%d" % divmod(n, 3)))
        body.append(_cell(236, y, "1%d%d" % divmod(n, 3)))
        body.append(_arrow(56, 41 + n * 26, 198, y + 11))
    body.append(_label(280, 60, "each element of object 0 has its own pointer;"))
    body.append(_label(280, 76, "object k lies k*E (or k*objectStride) further on"))
    return _svg(600, 195, body)


def svg_list():
    body = [_label(10, 16, "List: list[k] + byteShift + i*rowStride + j*elemStride")]
    for k in range(2):
        body.append(_cell(10, 40 + k * 60, "l[%d]" % k, fill="#f5e9d0", w=44))
        body.append(_object(160, 40 + (1 - k) * 60, k))
        body.append(_arrow(56, 51 + k * 60, 158, 51 + (1 - k) * 60))
    body.append(_label(160, 140, "one pointer per object; the objects anywhere in memory"))
    return _svg(600, 150, body)


def outputs():
    fams = _families()
    missing = [f for f in fams if f not in FAMILIES]
    if missing:
        raise SystemExit("catalogue/behaviours.py has no entry for " + ", ".join(missing))
    files = OrderedDict()
    files["index.md"] = index_page(fams)
    files["layouts.md"] = layouts_page()
    files["layout-direct.svg"] = svg_direct()
    files["layout-elems.svg"] = svg_elems()
    files["layout-list.svg"] = svg_list()
    for family, forms in fams.items():
        files[page_name(family)] = family_page(family, forms)
    return files


def write(docdir, check):
    files = outputs()
    if check:
        stale = [n for n, text in files.items()
                 if not os.path.exists(os.path.join(docdir, n)) or open(os.path.join(docdir, n)).read() != text]
        extra = sorted(set(os.listdir(docdir)) - set(files)) if os.path.isdir(docdir) else []
        if stale or extra:
            print("%s is out of date (%s): run catalogue/generate.py docs %s"
                  % (docdir, ", ".join(stale + extra), docdir))
            return 1
        return 0
    os.makedirs(docdir, exist_ok=True)
    for name, text in files.items():
        _write_if_changed(os.path.join(docdir, name), text)
    return 0


HTML = """<!DOCTYPE html>
<html><head><meta charset="utf-8"><title>%s</title>
<style>body{font-family:sans-serif;max-width:70em;margin:auto;padding:1em}
pre{background:#f4f4f4;padding:.5em;overflow-x:auto;white-space:pre-wrap}
table{border-collapse:collapse}td,th{border:1px solid #ccc;padding:.2em .5em}</style>
</head><body>
%s
</body></html>
"""


def html(docdir, outdir):
    """Every page of docdir as HTML in outdir, links and pictures kept."""
    try:
        import markdown
    except ImportError:
        # The Debian package serves the system's interpreter, which may not be this one.
        import subprocess
        import sys
        system = "/usr/bin/python3"
        if os.path.exists(system) and os.path.realpath(sys.executable) != os.path.realpath(system):
            here = os.path.join(os.path.dirname(os.path.abspath(__file__)), "generate.py")
            return subprocess.call([system, here, "html", docdir, outdir])
        print("python3-markdown is missing: bash scripts/setup.sh installs it")
        return 1
    import shutil
    os.makedirs(outdir, exist_ok=True)
    for name in sorted(os.listdir(docdir)):
        src = os.path.join(docdir, name)
        if name.endswith(".svg"):
            shutil.copyfile(src, os.path.join(outdir, name))
        elif name.endswith(".md"):
            with open(src) as fh:
                text = fh.read()
            body = markdown.markdown(text, extensions=["tables", "fenced_code"])
            body = body.replace('.md"', '.html"')
            title = text.splitlines()[0].lstrip("# ")
            with open(os.path.join(outdir, name[:-3] + ".html"), "w") as fh:
                fh.write(HTML % (title, body))
    print("wrote %s/index.html" % outdir)
    return 0
