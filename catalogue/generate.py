#!/usr/bin/env python3
"""Expands the catalogue table into the public header, the export list, the
exported wrappers of every source unit and the test adapters.

    generate.py header [--check] PATH      write include/vorx.h (or compare with it)
    generate.py build OUTDIR               wrappers (<unit>.inc), exports.map, names.txt,
                                           catalogue_calls.inc for the tests
    generate.py counts                     per-family counts of the whole catalogue
    generate.py cpp [--check] PATH         write include/vorx.hpp (or compare with it)
    generate.py docs [--check] DIR         write the manual, docs/ (or compare with it)
    generate.py html DOCS OUTDIR           render the manual to HTML (python3-markdown)
    generate.py python PATH                the built functions as JSON, for the Python package

One rule maps a row to its prototypes and wrappers; see table.py for the tokens.
"""
import os
import re
import sys
from collections import OrderedDict, Counter

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from table import ROWS  # noqa: E402

TYPES = {"32f": "float", "64f": "double"}
ALL_LAYOUTS = ["", "S2", "P", "PS2", "L", "LS2"]
SINGLE_LAYOUTS = ["", "S2", "P"]
PAIR_LETTER = {"S": "S2", "P": "PS2", "L": "LS2"}
SIZE_SETS = {
    "vector": [None, "3x1", "4x1", "5x1", "6x1"],
    "matrix": [None, "3x3", "4x4", "5x5", "6x6"],
    "3x1": ["3x1"],
    "square": ["3x3", "4x4", "5x5", "6x6"],
    "generic": [None],
}
LAYOUT_ENUM = {"": "C", "S2": "S2", "P": "P", "PS2": "PS2", "L": "L", "LS2": "LS2"}
PREFIX = "vorx"

# The arguments each operand kind brings in each layout: 'x' the element pointer,
# 't' a table of pointers, then the integer words in order.
_KIND_WORDS = {
    "v":  {"": "x", "S2": "x ES", "P": "t BS", "PS2": "t BS", "L": "x", "LS2": "x ES"},
    "va": {"": "x OS", "S2": "x OS ES", "P": "t BS", "PS2": "t BS OS", "L": "t BS",
           "LS2": "t BS ES"},
    "m":  {"": "x RS", "S2": "x RS ES", "P": "t BS", "PS2": "t BS", "L": "x RS",
           "LS2": "x RS ES"},
    "ma": {"": "x OS RS", "S2": "x OS RS ES", "P": "t BS", "PS2": "t BS OS",
           "L": "t BS RS", "LS2": "t BS RS ES"},
    "mq": {"": "x OS RS", "S2": "x OS RS ES", "P": "t BS", "PS2": "t BS", "L": "x OS RS",
           "LS2": "x OS RS ES"},
}
_KIND_WORDS["mT"] = _KIND_WORDS["m"]
_KIND_WORDS["maT"] = _KIND_WORDS["ma"]
WORD_NAMES = {"OS": "ObjectStride", "RS": "RowStride", "ES": "ElemStride", "BS": "ByteShift"}
ARRAY_KINDS = {"va", "ma", "maT"}
CODE_RE = re.compile(r"maT|ma|mT|m|va|v|c")


def split_codes(codes):
    """Operand codes read from the left, longest first: 'mamaT' is ma, maT."""
    out, pos = [], 0
    while pos < len(codes):
        m = CODE_RE.match(codes, pos)
        if not m:
            raise ValueError("bad operand codes " + codes)
        out.append(m.group(0))
        pos = m.end()
    return out


class Param:
    def __init__(self, name, ctype, role, size=False):
        self.name, self.ctype, self.role, self.size = name, ctype, role, size


class Operand:
    """What the tests' harness needs to lay an argument out: its role ('o' an
    operand in a layout, 'i' an index array, 'b' an element buffer, 'r' scalar
    results, 'v' a value, 'z' a size, 'n' the count), its kind and layout, and its
    shape as expressions over the size names (and `objects`: count in array calls,
    else 1). The shape of a matrix operand is the operation's; a transposed kind is
    stored the other way round."""

    def __init__(self, name, role, kind="", layout="", rows="1", cols="1", out=False):
        self.name, self.role, self.kind, self.layout = name, role, kind, layout
        self.rows, self.cols, self.out = rows, cols, out


def _shape(bracket, default):
    """'[a,b]' -> (a, b); '[n]' -> ('1', n); none -> default."""
    if not bracket:
        return default
    parts = bracket.strip("[]").split(",")
    return ("1", parts[0]) if len(parts) == 1 else (parts[0], parts[1])


class Function:
    """One exported name: its parameters and how its wrapper calls the body."""

    def __init__(self, row, code, tname, size, layout):
        self.row, self.code, self.tname, self.size, self.layout = row, code, tname, size, layout
        self.family = row["family"]
        self.prefix = row.get("prefix", PREFIX)
        self.ret = row.get("ret", "vorxStatus")
        # The kernels share a family with exported operations but have bodies of
        # their own: their label and body tag carry the prefix.
        own = "" if self.prefix == PREFIX else self.prefix
        self.label = own + self.family
        self.tag = "%s_%s" % (self.label, code)
        self.codes = split_codes(code)
        self.array = any(k in ARRAY_KINDS for k in self.codes)
        parts = [self.prefix + self.family, code, tname]
        if size:
            parts.append(size)
        if layout:
            parts.append(layout)
        self.name = "_".join(parts)
        self.n = int(size[0]) if size else 0
        self.params = []   # Param list of the prototype
        self.call = []     # C++ expressions of the body call
        self.operands = []  # Operand list for the tests' harness
        self._expand()

    def _operand_kind(self, kind):
        if kind.startswith("@"):
            return self.codes[int(kind[1:]) - 1]
        if kind.startswith("*"):
            base = kind[1:]
            return base + "a" if self.array else base
        return kind

    def _expand(self):
        T = TYPES[self.tname]
        toks = self.row["args"].split()
        sizes = [t[1:] for t in toks if t.startswith("#")]
        square = [n for n in sizes if n in ("size", "widthHeight")]
        vlen = "len" if "len" in sizes else (square[0] if square else "len")
        mshape = (square[0], square[0]) if square else ("^height", "width")
        for tok in toks:
            if tok == "count?":
                if self.array:
                    self.params.append(Param("count", "uint32_t", "count"))
                    self.call.append("count")
                    self.operands.append(Operand("count", "n"))
                continue
            if tok.startswith("#"):
                name = tok[1:]
                if self.size:
                    self.call.append("%du" % self.n)
                else:
                    self.params.append(Param(name, "uint32_t", "size", size=True))
                    self.call.append(name)
                self.operands.append(Operand(name, "z"))
                continue
            bracket = None
            if "[" in tok:
                tok, bracket = tok[:tok.index("[")], tok[tok.index("["):]
            name, kind = tok.split(":")
            if kind == "val":
                self.params.append(Param(name, T, "value"))
                self.call.append(name)
                self.operands.append(Operand(name, "v"))
                continue
            if kind == "res":
                self.params.append(Param(name, T + "*", "ptr"))
                self.call.append(name)
                self.operands.append(Operand(name, "r", cols="objects", out=True))
                continue
            plain = {"u32p": "uint32_t*", "cu32p": "const uint32_t*", "Tp": T + "*",
                     "cTp": "const " + T + "*", "i32": "int32_t", "u32": "uint32_t"}
            if kind in plain:
                role = "ptr" if plain[kind].endswith("*") else "int"
                self.params.append(Param(name, plain[kind], role))
                self.call.append(name)
                if role == "ptr":
                    index = kind.endswith("u32p")
                    rows, cols = _shape(bracket, ("1", "objects*" + vlen))
                    self.operands.append(Operand(name, "i" if index else "b", rows=rows, cols=cols,
                                                 out=not plain[kind].startswith("const")))
                continue
            layout = self.layout
            if "/" in kind:
                kind, which = kind.split("/")
                layout = PAIR_LETTER[self.layout[int(which) - 1]]
            k = self._operand_kind(kind)
            const = "" if name == "dst" else "const "
            words = _KIND_WORDS[k][layout].split()
            args = []
            for w in words:
                if w == "x":
                    self.params.append(Param(name, const + T + "*", "ptr"))
                elif w == "t":
                    self.params.append(Param(name, const + T + "* const*", "ptr"))
                else:
                    self.params.append(Param(name + WORD_NAMES[w], "int32_t", "int"))
                args.append(self.params[-1].name)
            self.call.append("make<K::%s, Lay::%s>(%s)" % (k, LAYOUT_ENUM[layout], ", ".join(args)))
            vector = k in ("v", "va")
            rows, cols = _shape(bracket, ("1", vlen) if vector else mshape)
            self.operands.append(Operand(name, "o", k, layout, rows, cols, out=name == "dst"))

    @property
    def group(self):
        """The operand group: the code without any T, as the units are cut."""
        return self.code.replace("T", "")

    @property
    def unit(self):
        if "unit" in self.row:
            return self.row["unit"](self)
        base = "vorx%s_%s" % (self.family.lower(), self.group)
        return base + ("_" + self.size if self.size else "")

    @property
    def body_layout(self):
        """The layout the body is chosen by. A suffix of layout letters (Copy,
        LoadIdentity) hands over the layout of its first letter; the layout of each
        operand travels in its own view anyway."""
        if self.layout in LAYOUT_ENUM:
            return LAYOUT_ENUM[self.layout]
        return LAYOUT_ENUM[PAIR_LETTER[self.layout[0]]]

    def prototype(self):
        ps = ", ".join("%s %s" % (p.ctype, p.name) for p in self.params) or "void"
        return "%s %s(%s)" % (self.ret, self.name, ps)

    def wrapper(self):
        body = "Body<tag::%s, %s, %d, Lay::%s>::run(%s)" % (
            self.tag, TYPES[self.tname], self.n, self.body_layout, ", ".join(self.call))
        return "VORX_EXPORT %s\n{\n    return %s;\n}\n" % (self.prototype(), body)


def expand(row):
    for code in row["codes"].split():
        ops = split_codes(code)
        layouts = row.get("layouts") or (
            ALL_LAYOUTS if any(k in ARRAY_KINDS for k in ops) else SINGLE_LAYOUTS)
        for tname in ("32f", "64f"):
            for size in SIZE_SETS[row["sizes"]]:
                for layout in layouts:
                    yield Function(row, code, tname, size, layout)


def catalogue(built_only=False):
    return [f for row in ROWS if row.get("built") or not built_only for f in expand(row)]


HEADER_TOP = """\
/* vorx: small-matrix and small-vector mathematics for 32-bit x86 with SSE.
 *
 * Generated from catalogue/table.py by catalogue/generate.py: edit the table, not
 * this file. Every function is a plain C function; its name spells the operation,
 * the operand kinds, the element type, the fixed size and the memory layout.
 * Strides and shifts are in bytes; sizes and counts are unsigned.
 */
#ifndef VORX_H
#define VORX_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef int32_t vorxStatus;

enum {
    vorxStatusOk = 0,
    vorxStatusBadSize = -6,
    vorxStatusNullPointer = -8,
    vorxStatusZeroDivide = -10,
    vorxStatusNotPositiveDefinite = -179
};

typedef struct vorxVersionRecord {
    int32_t majorVersion;
    int32_t minorVersion;
    int32_t buildMajor;
    int32_t buildMinor;
    char cpuTag[4];
    const char* libraryName;
    const char* versionText;
    const char* buildDate;
} vorxVersionRecord;

const vorxVersionRecord* vorxGetLibVersion(void);
"""

HEADER_BOTTOM = """
#ifdef __cplusplus
}
#endif

#endif /* VORX_H */
"""


def header_text():
    out = [HEADER_TOP]
    section = None
    for f in catalogue(built_only=True):
        key = (f.label, f.row["codes"])
        if key != section:
            section = key
            out.append("\n/* %s: %s */\n" % key)
        out.append(f.prototype() + ";\n")
    out.append(HEADER_BOTTOM)
    return "".join(out)


def exported_names(built_only=True):
    return sorted(["vorxGetLibVersion"] + [f.name for f in catalogue(built_only)])


ADAPTER_NOTE = """\
// Generated by catalogue/generate.py. For the tests: every built function with
// its name parts and an adapter that calls it with arguments picked by name from
// an ArgPack, so one table-driven test can call a whole family. The table itself
// is defined where VORX_CATALOGUE_DEFINITIONS is set (one unit of the tests).
#pragma once
#include <string_view>
#include "vorx.h"
"""


def write_build(outdir):
    os.makedirs(outdir, exist_ok=True)
    funcs = catalogue(built_only=True)
    units = OrderedDict()
    for f in funcs:
        units.setdefault(f.unit, []).append(f)
    for unit, fs in units.items():
        text = ("// Generated by catalogue/generate.py: the exported functions of this unit.\n"
                "using namespace vorx;\n\n")
        text += "\n".join(f.wrapper() for f in fs)
        _write_if_changed(os.path.join(outdir, unit + ".inc"), text)
    names = exported_names()
    _write_if_changed(os.path.join(outdir, "names.txt"), "\n".join(names) + "\n")
    _write_if_changed(os.path.join(outdir, "units.txt"), "\n".join(units) + "\n")
    vs = "{\n  global:\n" + "".join("    %s;\n" % n for n in names) + "  local:\n    *;\n};\n"
    _write_if_changed(os.path.join(outdir, "exports.map"), vs)
    _write_if_changed(os.path.join(outdir, "catalogue_calls.inc"), adapters(funcs))


def adapters(funcs):
    fields = OrderedDict()
    for f in funcs:
        for p in f.params:
            fields[p.name] = p.role
    out = [ADAPTER_NOTE, "struct ArgPack {\n"]
    for name, role in fields.items():
        if role == "ptr":
            out.append("    void* %s = nullptr;\n" % name)
        elif role == "value":
            out.append("    long double %s = 0;\n" % name)
        else:
            out.append("    %s %s = 0;\n" % ("int32_t" if role == "int" else "uint32_t", name))
    out.append("};\n\n// The address of the pack's field of that name, or null.\n"
               "inline void* argField(ArgPack& a, std::string_view n)\n{\n")
    for name in fields:
        out.append('    if (n == "%s") return &a.%s;\n' % (name, name))
    out.append("    return nullptr;\n}\n")
    out.append(OPERAND_STRUCT)
    operand_lists = OrderedDict()
    for f in funcs:
        key = tuple((o.name, o.role, o.kind, o.layout, o.rows, o.cols, o.out) for o in f.operands)
        operand_lists.setdefault(key, len(operand_lists))
    out.append("\nstruct CatalogueEntry {\n    const char* name;\n    const char* family;\n"
               "    const char* code;\n    const char* type;\n    unsigned size;\n"
               "    const char* layout;\n    vorxStatus (*call)(const ArgPack&);\n"
               "    const Operand* operands;\n    unsigned operandCount;\n};\n\n")
    out.append("extern const CatalogueEntry kCatalogue[%d];\n" % len(funcs))
    out.append("#ifdef VORX_CATALOGUE_DEFINITIONS\n")
    for key, n in operand_lists.items():
        items = ", ".join('{"%s", \'%s\', "%s", "%s", "%s", "%s", %s}'
                          % (name, role, kind, LAYOUT_ENUM.get(lay, lay) if role == "o" else "", rows, cols,
                             "true" if o else "false")
                          for name, role, kind, lay, rows, cols, o in key)
        out.append("static const Operand kOperands%d[] = {%s};\n" % (n, items))
    out.append("const CatalogueEntry kCatalogue[%d] = {\n" % len(funcs))
    for f in funcs:
        args = []
        for p in f.params:
            if p.role == "ptr":
                args.append("(%s)a.%s" % (p.ctype, p.name))
            elif p.role == "value":
                args.append("(%s)a.%s" % (p.ctype, p.name))
            else:
                args.append("a.%s" % p.name)
        call = "%s(%s)" % (f.name, ", ".join(args))
        # A function without a status (the plain kernels) reports success to the table.
        call = call + "; return vorxStatus(vorxStatusOk);" if f.ret == "void" else "return " + call + ";"
        key = tuple((o.name, o.role, o.kind, o.layout, o.rows, o.cols, o.out) for o in f.operands)
        out.append('    {"%s", "%s", "%s", "%s", %d, "%s",\n     [](const ArgPack& a) { %s },\n'
                   '     kOperands%d, %d},\n'
                   % (f.name, f.label, f.code, f.tname, f.n, f.layout, call, operand_lists[key], len(key)))
    out.append("};\n#endif\n")
    return "".join(out)


OPERAND_STRUCT = """
// One argument of a function as the harness lays it out (see Operand in
// catalogue/generate.py): role o operand, i index array, b element buffer, r scalar
// results, v value, z size, n count; layout C S2 P PS2 L LS2 of an operand; shape
// as expressions over the size names, `^` marking the operation's shape, which a
// transposed kind stores the other way round.
struct Operand {
    const char* name;
    char role;
    const char* kind;
    const char* layout;
    const char* rows;
    const char* cols;
    bool out;
};
"""


def _write_if_changed(path, text):
    if os.path.exists(path):
        with open(path) as fh:
            if fh.read() == text:
                return
    with open(path, "w") as fh:
        fh.write(text)


def counts():
    per = Counter()
    for f in catalogue():
        per[(f.label, f.code)] += 1
    return per


def _write_or_check(path, text, check, command):
    """Writes a generated file, or with check says whether it is current."""
    if check:
        with open(path) as fh:
            if fh.read() != text:
                print("%s is out of date: run catalogue/generate.py %s %s" % (path, command, path))
                return 1
        return 0
    _write_if_changed(path, text)
    return 0


def python_table():
    """Every built function as plain data: its name parts, prototype and operand
    list. The Python package reads this (from the tree or from the JSON file
    written next to an installed package) to choose and call functions."""
    out = []
    for f in catalogue(built_only=True):
        out.append(dict(
            name=f.name, family=f.family, prefix=f.prefix, code=f.code, codes=f.codes,
            type=f.tname, size=f.n, layout=f.layout, ret=f.ret,
            params=[[p.name, p.ctype, p.role] for p in f.params],
            operands=[dict(name=o.name, role=o.role, kind=o.kind, layout=o.layout,
                           rows=o.rows, cols=o.cols, out=o.out) for o in f.operands]))
    return out


def main(argv):
    if len(argv) >= 2 and argv[0] == "header":
        return _write_or_check(argv[-1], header_text(), "--check" in argv, "header")
    if len(argv) == 2 and argv[0] == "build":
        write_build(argv[1])
        import cpp
        cpp.write_tests(argv[1])
        return 0
    if len(argv) >= 2 and argv[0] == "cpp":
        import cpp
        return _write_or_check(argv[-1], cpp.header_text(), "--check" in argv, "cpp")
    if len(argv) >= 2 and argv[0] == "docs":
        import docs
        return docs.write(argv[-1], "--check" in argv)
    if len(argv) == 3 and argv[0] == "html":
        import docs
        return docs.html(argv[1], argv[2])
    if len(argv) == 2 and argv[0] == "python":
        import json
        _write_if_changed(argv[1], json.dumps(python_table(), separators=(",", ":")) + "\n")
        return 0
    if argv and argv[0] == "counts":
        per = counts()
        for (fam, code), n in sorted(per.items()):
            print("%-18s %-8s %4d" % (fam, code, n))
        print("total", sum(per.values()))
        return 0
    print(__doc__)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
