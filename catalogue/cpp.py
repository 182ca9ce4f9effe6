"""The C++ interface, include/vorx.hpp, and the test that calls every name through it.

A row and one of its operand codes make a *form*: the arguments a C++ caller passes
(operand views, values, plain pointers, in the order of the name's operand codes),
from which the element type, fixed size and layout choose the exported function.
Sizes and the count come from the views; the layout arguments from each view's fields.
"""
import os
import re

from generate import (ALL_LAYOUTS, TYPES, _KIND_WORDS, PAIR_LETTER, catalogue, split_codes)

HERE = os.path.dirname(os.path.abspath(__file__))
WORD_FIELD = {"x": "p", "t": "p", "OS": "os", "RS": "rs", "ES": "es", "BS": "bs"}
LETTER_CODE = {"S": 1, "P": 2, "L": 3}
# The layout of a single operand's view in a call of each layout.
SINGLE_VIEW = {"": "contiguous", "S2": "strided", "P": "elems", "PS2": "elems", "L": "contiguous",
               "LS2": "strided"}
ARRAY_VIEW = {"": "contiguous", "S2": "strided", "P": "elems", "PS2": "elems_strided", "L": "list",
              "LS2": "list_strided"}
PLAIN_SLOTS = {"u32p": "idx", "cu32p": "cidx", "Tp": "buf", "cTp": "buf"}
NAMES = {"LComb": "lcomb"}


def op_name(label):
    """Add -> add, LUBackSubst -> lu_back_subst."""
    if label in NAMES:
        return NAMES[label]
    return re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", label).lower()


def lay_code(layout, lettered=False):
    """The layout of a name as the header's resolution computes it (see lay_fold):
    lettered where the suffix names operands' layouts by letters (Copy: `PS`)."""
    if not lettered:
        return ALL_LAYOUTS.index(layout)
    n = 0
    for c in layout:
        n = n * 4 + LETTER_CODE[c]
    return 16 + n


class Slot:
    """One argument of a C++ call: an operand view, a value or a plain argument."""

    def __init__(self, name, kind, out=False, pair=0, code=None):
        self.name, self.kind, self.out, self.pair, self.code = name, kind, out, pair, code

    @property
    def view(self):
        return self.kind in ("v", "va", "m", "ma", "mT", "maT", "mq")

    @property
    def array(self):
        return self.kind in ("va", "ma", "maT")

    def view_layout(self, layout):
        if self.pair:
            return ARRAY_VIEW[PAIR_LETTER[layout[self.pair - 1]]]
        return (ARRAY_VIEW if self.array else SINGLE_VIEW)[layout]


class Form:
    """A row with one operand code: its slots in the caller's order."""

    def __init__(self, row, code, fid, functions):
        self.row, self.code, self.fid, self.functions = row, code, fid, functions
        f0 = functions[0]
        self.label, self.op = f0.label, op_name(f0.label)
        codes = split_codes(code)
        slots, order = [], []  # order: code index of each code operand, else None
        for tok in row["args"].split():
            if tok == "count?" or tok.startswith("#"):
                continue
            tok = tok.split("[")[0]
            name, kind = tok.split(":")
            pair = 0
            if "/" in kind:
                kind, which = kind.split("/")
                pair = int(which)
            if kind == "val":
                ci = codes.index("c") if "c" in codes else None
                slots.append(Slot(name, "val", code=ci))
            elif kind == "res":
                slots.append(Slot(name, "res", out=True))
            elif kind in PLAIN_SLOTS:
                slots.append(Slot(name, PLAIN_SLOTS[kind], out=not kind.startswith("c")))
            else:
                k = f0._operand_kind(kind)
                ci = int(kind[1:]) - 1 if kind.startswith("@") else None
                slots.append(Slot(name, k, out=name == "dst", pair=pair, code=ci))
        # Operands named by the code stand in the code's order (a constant first in `cv`).
        at = [i for i, s in enumerate(slots) if s.code is not None]
        for pos, s in zip(at, sorted((slots[i] for i in at), key=lambda s: s.code)):
            slots[pos] = s  # noqa: B020
        self.slots = slots

    @property
    def lettered(self):
        return any(s.pair for s in self.slots)

    def signature(self):
        return ", ".join(("%s %s" % (s.name, s.kind)) for s in self.slots)

    def cxx_type(self):
        parts = []
        for s in self.slots:
            extra = ""
            if s.out or s.pair:
                extra = ", %s" % ("true" if s.out else "false")
                if s.pair:
                    extra += ", %d" % s.pair
            parts.append("slot<sk::%s%s>" % (s.kind, extra))
        return "form<op::%s, %s>" % (self.fid, ", ".join(parts))

    def size_expr(self, size):
        """The C++ expression of a size argument, from the slots' views."""
        idx = {s.name: i for i, s in enumerate(self.slots)}
        m = re.match(r"(src\d?|dst)(Width|Height|Len)$", size)
        if m:
            what = {"Width": "width", "Height": "height", "Len": "len"}[m.group(2)]
            return "a%d.%s()" % (idx[m.group(1)], what)
        vectors = [i for i, s in enumerate(self.slots) if s.kind in ("v", "va")]
        matrices = [i for i, s in enumerate(self.slots) if s.view and s.kind not in ("v", "va")]
        if size == "len":
            return "a%d.len()" % vectors[0]
        what = {"width": "width", "height": "height", "size": "width", "widthHeight": "width"}[size]
        return "a%d.%s()" % (matrices[0], what)

    def call_args(self, f):
        """The exported function's arguments, in its order, as C++ expressions."""
        idx = {s.name: i for i, s in enumerate(self.slots)}
        T = TYPES[f.tname]
        arrays = [i for i, s in enumerate(self.slots) if s.array]
        out = []
        for tok in f.row["args"].split():
            if tok == "count?":
                if f.array:
                    out.append("a%d.n" % arrays[0])
                continue
            if tok.startswith("#"):
                if not f.size:
                    out.append(self.size_expr(tok[1:]))
                continue
            name, kind = tok.split("[")[0].split(":")
            i = idx[name]
            s = self.slots[i]
            if s.kind == "val":
                out.append("static_cast<%s>(a%d)" % (T, i))
            elif not s.view:
                out.append("a%d" % i)
            else:
                layout = f.layout
                if s.pair:
                    layout = PAIR_LETTER[f.layout[s.pair - 1]]
                for w in _KIND_WORDS[s.kind][layout].split():
                    out.append("a%d.%s" % (i, WORD_FIELD[w]))
        return out

    def summary(self):
        """What exists for this form, for the compiler's message."""
        sizes = sorted({f.n for f in self.functions if f.n})
        generic = any(not f.n for f in self.functions)
        lays = []
        for f in self.functions:
            lay = f.layout or "C"
            if lay not in lays:
                lays.append(lay)
        size_text = " ".join(str(n) for n in sizes) + (" and run-time" if generic else "")
        return "float/double, sizes %s, layouts %s" % (size_text.strip(), " ".join(lays))


def forms(built_only=True):
    """Every form of the built catalogue, with its functions, in table order. Rows of
    one family and code with the same template make one form (the determinant
    kernels' two rows)."""
    out, seen = [], {}
    funcs = catalogue(built_only)
    by_key = {}
    for f in funcs:
        by_key.setdefault((f.label, f.row["args"], f.code), []).append(f)
    for (_, _, code), fs in by_key.items():
        base = "%s_%s" % (fs[0].label, code)
        n = seen.get(base, 0)
        seen[base] = n + 1
        fid = base if n == 0 else "%s_%d" % (base, n + 1)
        out.append(Form(fs[0].row, code, fid, fs))
    # A call is resolved by its operation and the kinds of its arguments: two forms
    # alike there could never both be reached.
    kinds = {}
    for form in out:
        key = (form.op, tuple(s.kind for s in form.slots))
        if key in kinds:
            raise ValueError("forms %s and %s take the same arguments" % (kinds[key], form.fid))
        kinds[key] = form.fid
    return out


HEADER_TOP = """\
// vorx.hpp: the C++ interface of vorx (C++20, header only).
//
// Generated from catalogue/table.py by catalogue/generate.py: edit the table or
// catalogue/cpp_core.hpp, not this file.
//
// Operands are views over the caller's memory (vorx::vec, vorx::mat_array, ...), which
// carry element type, layout, fixed or run-time size and count; one function per
// operation (vorx::add, vorx::mul, vorx::lu_decomp, ...) resolves at compile time to
// the exported function the catalogue names for those operands and calls it with its
// arguments in its order. A combination the catalogue lacks does not compile, and the
// compiler says what exists. vorx::checked::<operation> throws instead of returning a
// status. See docs/index.md.
#ifndef VORX_HPP
#define VORX_HPP

#include <array>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <type_traits>

#include "vorx.h"

"""


def header_text():
    fs = forms()
    with open(os.path.join(HERE, "cpp_core.hpp")) as fh:
        core = fh.read()
    out = [HEADER_TOP, core, "\nnamespace vorx {\nnamespace detail {\n\n"]
    out.append("enum class op : int {\n%s};\n\n" % "".join("    %s,\n" % f.fid for f in fs))
    arity = sorted({len(f.slots) for f in fs})
    for n in arity:
        params = ", ".join("[[maybe_unused]] auto&& a%d" % i for i in range(n))
        out.append("#define VORX_FN%d(O, T, N, L, ...) template <> struct fn<op::O, T, N, L> : yes { "
                   "static vorxStatus call(%s) { return VORX_HPP_CALL(__VA_ARGS__); } };\n" % (n, params))
    for form in fs:
        out.append("\n// %s (%s)\n" % (form.label, form.signature()))
        for f in form.functions:
            out.append("VORX_FN%d(%s, %s, %d, %d, %s, %s)\n" % (
                len(form.slots), form.fid, TYPES[f.tname], f.n, lay_code(f.layout, form.lettered), f.name,
                ", ".join(form.call_args(f))))
    for n in arity:
        out.append("#undef VORX_FN%d\n" % n)
    out.append("\nnamespace forms {\n")
    for form in fs:
        out.append("using %s = %s;\n" % (form.fid, form.cxx_type()))
    out.append("}  // namespace forms\n}  // namespace detail\n")
    ops = {}
    for form in fs:
        ops.setdefault(form.op, []).append(form)
    for op, group in ops.items():
        shapes = "; ".join("(%s)" % f.signature() for f in group)
        alike = {}
        for f in group:
            alike.setdefault(f.summary(), []).append("(%s)" % f.signature())
        has = "; ".join("%s: %s" % (" ".join(sigs), what) for what, sigs in alike.items())
        out.append(OP_TEMPLATE % dict(
            op=op, forms=", ".join("detail::forms::" + f.fid for f in group),
            shapes=_c_string(shapes), has=_c_string(has)))
    out.append("\nnamespace checked {\n")
    for op in ops:
        out.append("template <class... A>\ninline void %s(A&&... a)\n{\n"
                   "    raise_for(vorx::%s(static_cast<A&&>(a)...));\n}\n" % (op, op))
    out.append("}  // namespace checked\n}  // namespace vorx\n\n#endif  // VORX_HPP\n")
    return "".join(out)


OP_TEMPLATE = """
template <class... A>
[[nodiscard]] inline status %(op)s(A&&... a)
{
    using P = detail::pick<detail::types<A...>, %(forms)s>;
    static_assert(P::matched, "vorx::%(op)s takes %(shapes)s");
    static_assert(!P::matched || P::consistent,
                  "vorx::%(op)s: the operands must share one element type and fixed size, and the "
                  "outputs be writable");
    static_assert(!P::matched || !P::consistent || P::found,
                  "vorx::%(op)s has %(has)s (in array calls a single operand is contiguous in C "
                  "and L, strided in S2 and LS2, elems in P and PS2)");
    if constexpr (P::found)
        return P::call(a...);
    else
        return status::bad_size;
}
"""


def _c_string(text):
    return text.replace("\\", "\\\\").replace('"', '\\"')


# ---- The test that calls every name through the header (generated into the build).

# The view factory of each operand kind and layout in the test of every name, with
# the arguments after its pointer (names of every_name.h: OS object stride, RS row
# stride, ES element stride, CNT count).
FACTORY = {
    (False, "contiguous"): ("", "", ""), (False, "strided"): ("_strided", "", "ES"),
    (False, "elems"): ("_elems", "", "0"),
    (True, "contiguous"): ("_array", "OS", "CNT"), (True, "strided"): ("_array_strided", "OS", "ES, CNT"),
    (True, "elems"): ("_array_elems", "0", "CNT"), (True, "elems_strided"): ("_array_elems_strided", "0, OS", "CNT"),
    (True, "list"): ("_list", "0", "CNT"), (True, "list_strided"): ("_list_strided", "0", "ES, CNT"),
}


def view_expr(slot, layout, T, n):
    """A view of the arena for one operand: vorx::mat_list_strided<4, 4>(arena.list<float>(), ...)."""
    matrix = slot.kind not in ("v", "va")
    lay = slot.view_layout(layout)
    suffix, before, after = FACTORY[(slot.array, lay)]
    # A matrix brings its row stride between the leading arguments and the trailing ones,
    # except in the Pointer layouts, which have none.
    rs = ["RS"] if matrix and "elems" not in lay else []
    words = [w for w in before.split(", ") if w] + rs + [w for w in after.split(", ") if w]
    ptr = "arena.%s<%s>()" % ("list" if lay.startswith("list") else "table" if "elems" in lay else "x", T)
    if n:
        head = "vorx::%s%s<%s>(%s" % ("mat" if matrix else "vec", suffix, "%d, %d" % (n, n) if matrix else n, ptr)
    else:
        head = "vorx::%s%s(%s, %s" % ("mat" if matrix else "vec", suffix, ptr, "RT, RT" if matrix else "RT")
    text = head + "".join(", " + w.replace("ES", "ES<%s>" % T) for w in words) + ")"
    return "transposed(%s)" % text if slot.kind in ("mT", "maT") else text


def test_calls(chunks):
    """Lists of lines `CALL(name, expression)`, split in `chunks` parts."""
    lines = []
    for form in forms():
        for f in form.functions:
            args = []
            T = TYPES[f.tname]
            for s in form.slots:
                if s.kind == "val":
                    args.append("%s(2)" % T)
                elif s.kind in ("res", "buf"):
                    args.append("arena.out<%s>()" % T)
                elif s.kind in ("idx", "cidx"):
                    args.append("arena.perm()")
                else:
                    args.append(view_expr(s, f.layout, T, f.n))
            lines.append('CALL(%s, vorx::%s(%s))\n' % (f.name, form.op, ", ".join(args)))
    per = (len(lines) + chunks - 1) // chunks
    return [lines[i:i + per] for i in range(0, len(lines), per)]


def write_tests(outdir, chunks=4):
    """Units cpp_calls_<i>.cpp for tests/cpp: each defines cppCalls<i>(Calls&)."""
    from generate import _write_if_changed
    os.makedirs(outdir, exist_ok=True)
    parts = test_calls(chunks)
    for i, lines in enumerate(parts):
        text = ("// Generated by catalogue/generate.py: calls of built names through vorx.hpp.\n"
                '#include "every_name.h"\n\nvoid cppCalls%d(Calls& c)\n{\n    Arena arena;\n'
                "#define CALL(name, expr) c.check(#name, expr);\n" % i)
        text += "".join("    " + l for l in lines) + "#undef CALL\n}\n"
        _write_if_changed(os.path.join(outdir, "cpp_calls_%d.cpp" % i), text)
    decls = "".join("void cppCalls%d(Calls&);\n" % i for i in range(len(parts)))
    runs = "".join(" cppCalls%d(c);" % i for i in range(len(parts)))
    _write_if_changed(os.path.join(outdir, "cpp_calls.h"),
                      "#pragma once\nstruct Calls;\nconstexpr int kCppCalls = %d;\n%s"
                      "inline void cppCallsAll(Calls& c) {%s }\n"
                      % (sum(len(p) for p in parts), decls, runs))
