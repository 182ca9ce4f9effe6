"""Choosing and calling an exported function for NumPy operands.

One `Operation` stands for a family. A call looks at its operands (scalars, arrays of
one object, batches, lists of arrays), keeps the operand codes whose kinds they fit,
binds the sizes of the catalogue's shape expressions to their shapes, and takes the
fitting function of the element type with the best form: a fixed size before the
run-time one, then Contiguous, List, Strided (`_S2`), List-strided (`_LS2`), and a
transposed kind only where it gives a better form (a transposed view of C-ordered
data reaches the Contiguous form through `mT`/`maT`).
"""
import ctypes

import numpy as np

ARRAY_KINDS = {"va", "ma", "maT"}
VECTOR_KINDS = {"v", "va"}
TRANSPOSED_KINDS = {"mT", "maT"}
WORDS = ("ObjectStride", "RowStride", "ElemStride", "ByteShift")
# The rank of an operand's layout; the pointer layouts (one pointer per element)
# have no use over NumPy arrays.
LAYOUT_RANK = {"": 0, "L": 1, "S2": 2, "LS2": 3}
DTYPES = {"32f": np.dtype(np.float32), "64f": np.dtype(np.float64)}
CTYPES = {"float": ctypes.c_float, "double": ctypes.c_double, "int32_t": ctypes.c_int32,
          "uint32_t": ctypes.c_uint32}
STATUS_BAD_SIZE, STATUS_NULL, STATUS_ZERO_DIVIDE, STATUS_NOT_POSITIVE = -6, -8, -10, -179
INT32 = 2 ** 31


class _BadSize(Exception):
    pass


class VorxLinAlgError(np.linalg.LinAlgError):
    """A status of the library for one object: `index` is the first failing object
    of a batch (None for a single object), `function` the exported name."""

    def __init__(self, message, function=None, index=None):
        super().__init__(message)
        self.function, self.index = function, index

    def __reduce__(self):
        return type(self), (self.args[0], self.function, self.index)


class SingularMatrixError(VorxLinAlgError):
    """A pivot or divisor below the family's threshold."""


class NotPositiveDefiniteError(VorxLinAlgError):
    """A diagonal term under the root that is not positive."""


def _strip(expr):
    return expr[1:] if expr.startswith("^") else expr


def _evaluate(expr, names):
    return int(eval(_strip(expr), {"__builtins__": {}}, names))  # catalogue expressions only


class Arg:
    """One operand as given: 's' a scalar, 'a' an array, 'l' a list of arrays."""

    def __init__(self, x, dtype=None):
        if isinstance(x, (list, tuple)):
            self.form, self.items = "l", [np.asarray(i) for i in x]
        elif np.ndim(x) == 0:
            self.form, self.value = "s", x
        else:
            self.form, self.array = "a", np.asarray(x)

    def arrays(self):
        return self.items if self.form == "l" else [self.array] if self.form == "a" else []

    def ndim(self):
        if self.form == "l":
            return (self.items[0].ndim + 1) if self.items else None
        return self.array.ndim if self.form == "a" else 0

    def object_shape(self, array_kind):
        """The shape of one object, or None where the objects differ."""
        if self.form == "l":
            shapes = {i.shape for i in self.items}
            return shapes.pop() if len(shapes) == 1 else None
        return self.array.shape[1:] if array_kind else self.array.shape

    def batch(self):
        return len(self.items) if self.form == "l" else self.array.shape[0]


class Entry:
    """One exported function and how its parameters map onto its operands."""

    def __init__(self, row, library):
        self.row, self.library = row, library
        self.name, self.family, self.codes = row["name"], row["family"], row["codes"]
        self.size, self.layout, self.dtype = row["size"], row["layout"], DTYPES[row["type"]]
        self.operands = row["operands"]
        self.array = any(c in ARRAY_KINDS for c in self.codes)
        self.size_names = [o["name"] for o in self.operands if o["role"] == "z"]
        by_name = {o["name"]: o for o in self.operands}
        self.owner = {}
        for pname, ctype, role in row["params"]:
            if pname in by_name:
                self.owner[pname] = (by_name[pname], None)
            else:
                for w in WORDS:
                    if pname.endswith(w) and pname[:-len(w)] in by_name:
                        self.owner[pname] = (by_name[pname[:-len(w)]], w)
        self._function = None

    def function(self):
        if self._function is None:
            fn = getattr(self.library, self.name)
            fn.restype = ctypes.c_int32
            fn.argtypes = [ctypes.c_void_p if c.endswith("*") else CTYPES[c]
                           for _, c, _ in self.row["params"]]
            self._function = fn
        return self._function


def _python_order(entry):
    """The inputs in the order the Python call takes them: the call's order, but where
    a scalar is one of the operand codes (Sub cv: value minus vector) the code-bound
    inputs follow the name."""
    inputs = [o for o in entry.operands if not o["out"] and o["role"] in "ovib"]
    if "c" not in entry.codes:
        return inputs
    bound, values = [], iter([i for i, c in enumerate(entry.codes) if c == "c"])
    for o in inputs:
        pos = None
        if o["role"] == "o" and o.get("code") is not None:
            pos = o["code"]
        elif o["role"] == "v":
            pos = next(values, None)
        bound.append(pos)
    slots = [i for i, p in enumerate(bound) if p is not None]
    ordered = sorted((bound[i], inputs[i]) for i in slots)
    out = list(inputs)
    for i, (_, o) in zip(slots, ordered):
        out[i] = o
    return out


def _code_positions(entry):
    """Which operand code each layout operand stands for, read off the kinds (the
    template's @k is expanded by then): the k-th non-scalar code in order."""
    kinds = [c for c in entry.codes]
    taken = set()
    for o in entry.operands:
        if o["role"] != "o" or o["out"]:
            continue
        for i, c in enumerate(kinds):
            if i not in taken and c == o["kind"] and c != "c":
                o["code"] = i
                taken.add(i)
                break


class Plan:
    """The function chosen for one call and everything its arguments need."""

    def __init__(self, entry, stored, values, sizes, count, rank):
        self.entry, self.stored, self.values, self.sizes = entry, stored, values, sizes
        self.count, self.rank = count, rank
        self.snapshot = None   # (array, copy) pairs of sources an in-place call overwrites
        self.args = None


class Operation:
    """A family: the Python entry over all its built functions."""

    def __init__(self, family, entries):
        self.family = family
        self.by_code = {}
        self.cache = {}
        for e in entries:
            _code_positions(e)
            e.slots = _python_order(e)
            self.by_code.setdefault(e.row["code"], []).append(e)

    # -- choosing ---------------------------------------------------------------------

    def _fits_kinds(self, slots, args):
        for o, a in zip(slots, args):
            if o["role"] == "v":
                if a.form != "s":
                    return False
            elif o["role"] == "o":
                base = 1 if o["kind"] in VECTOR_KINDS else 2
                if o["kind"] in ARRAY_KINDS:
                    if a.form == "s" or a.ndim() not in (None, base + 1):
                        return False
                elif a.form != "a" or a.ndim() != base:
                    return False
            elif a.form != "a":
                return False
        return True

    def plan(self, args, outs, dtype, given_sizes):
        """Every function that takes these operands, the best first. The functions
        found are kept for operands of the same types, shapes and strides."""
        key = (dtype.str, tuple(map(_signature, args)),
               None if outs is None else tuple(_signature(Arg(x)) for x in outs),
               tuple(sorted(given_sizes.items())))
        entries = self.cache.get(key)
        if entries is None:
            plans = self._search(args, outs, dtype, given_sizes)
            if len(self.cache) > 512:
                self.cache.clear()
            self.cache[key] = [p.entry for p in plans]
            yield from plans
            return
        for e in entries:
            p = self._plan_entry(e, e.slots, args, outs, given_sizes, [])
            if p is not None:
                yield p

    def _search(self, args, outs, dtype, given_sizes):
        reasons = []
        plans = []
        for code, entries in self.by_code.items():
            slots = entries[0].slots
            if len(slots) != len(args) or not self._fits_kinds(slots, args):
                continue
            for e in entries:
                if e.dtype != dtype:
                    continue
                p = self._plan_entry(e, e.slots, args, outs, given_sizes, reasons)
                if p is not None:
                    plans.append(p)
        if not plans:
            shapes = ", ".join(_describe(a) for a in args)
            why = ("; " + reasons[0]) if reasons else ""
            raise ValueError("vorx.%s: no form takes operands %s%s" % (_snake(self.family), shapes, why))
        return sorted(plans, key=lambda p: p.rank)

    def _plan_entry(self, e, slots, args, outs, given_sizes, reasons):
        count = None
        for o, a in zip(slots, args):
            if o["role"] == "o" and o["kind"] in ARRAY_KINDS:
                n = a.batch()
                if count is not None and n != count:
                    reasons.append("batches of %d and %d objects" % (count, n))
                    return None
                count = n
        outputs = _outputs(e)
        if outs is not None and len(outs) != len(outputs):
            raise ValueError("out= takes %d arrays here" % len(outputs))
        if count is None and e.array:
            if outs is not None and outputs[0]["role"] == "o":
                count = Arg(outs[0]).batch()
            else:
                count = given_sizes.get("count")
            if count is None:
                return None
        if not e.array and count is not None:
            return None
        sizes = dict((k, v) for k, v in given_sizes.items() if k in e.size_names)
        pairs = list(zip(slots, args))
        if outs is not None:
            pairs += [(o, Arg(x)) for o, x in zip(outputs, outs) if o["role"] == "o"]
        # Bind the plain names of the shapes to the operands' dimensions.
        checks = []
        for o, a in pairs:
            if o["role"] != "o":
                continue
            shape = a.object_shape(o["kind"] in ARRAY_KINDS)
            if shape is None:
                reasons.append("list objects of different shapes")
                return None
            exprs = [o["cols"]] if o["kind"] in VECTOR_KINDS else [o["rows"], o["cols"]]
            # The shape given is the operation's; a transposed kind's stored one is
            # swapped below.
            for expr, dim in zip(exprs, shape):
                name = _strip(expr)
                if name.isidentifier() and name in e.size_names:
                    if sizes.setdefault(name, dim) != dim:
                        reasons.append("%s is %d and %d" % (name, sizes[name], dim))
                        return None
                else:
                    checks.append((expr, dim))
        for a_name, b_name in SAME_SIZE.get(e.family, ()):
            if b_name in sizes and a_name in e.size_names:
                sizes.setdefault(a_name, sizes[b_name])
        if e.size:
            if any(v != e.size for v in sizes.values()):
                return None
            sizes = dict((n, e.size) for n in e.size_names)
        elif any(n not in sizes for n in e.size_names):
            reasons.append("sizes %s not given" % [n for n in e.size_names if n not in sizes])
            return None
        for a_name, b_name in SAME_SIZE.get(e.family, ()):
            if a_name in e.size_names and b_name in e.size_names and sizes[a_name] != sizes[b_name]:
                reasons.append("%s %d and %s %d differ" % (a_name, sizes[a_name], b_name, sizes[b_name]))
                return None
        names = dict(sizes, objects=count if e.array else 1)
        for expr, dim in checks:
            if _evaluate(expr, names) != dim:
                reasons.append("a dimension %d where %s is %d" % (dim, expr, _evaluate(expr, names)))
                return None
        for o, a in zip(slots, args):
            # A buffer's length, for all objects or (one matrix for all) for one.
            if o["role"] in "ib" and a.array.size not in [
                    _evaluate(o["cols"], dict(names, objects=k)) * _evaluate(o["rows"], names) for k in (names["objects"], 1)]:
                reasons.append("%s has %d elements, not %s" % (o["name"], a.array.size, o["cols"]))
                return None
        stored, values = {}, {}
        rank = 0
        for o, a in pairs:
            if o["role"] == "o" and o["out"] and o["kind"] in ARRAY_KINDS and a.batch() != count:
                raise ValueError("out %s holds %d objects, not %d" % (o["name"], a.batch(), count))
            if o["role"] == "o" and o["out"] and any(x.dtype != e.dtype or not x.flags.writeable
                                                     for x in a.arrays()):
                raise ValueError("out %s: writeable %s arrays" % (o["name"], e.dtype))
            if o["role"] == "v":
                values[o["name"]] = float(a.value)
            elif o["role"] == "i":
                stored[o["name"]] = Arg(np.ascontiguousarray(a.array, dtype=np.uint32))
            elif o["role"] == "b":
                stored[o["name"]] = Arg(np.ascontiguousarray(a.array, dtype=e.dtype))
            elif o["role"] == "o":
                x = _transposed(a) if o["kind"] in TRANSPOSED_KINDS else a
                if o["kind"] in TRANSPOSED_KINDS and len(set(x.object_shape(True) or (0, 1))) != 1:
                    return None   # the library reads a non-square transposed operand its own way
                if not _fits_layout(o["kind"], o["layout"], x, e.dtype.itemsize):
                    return None
                rank = max(rank, LAYOUT_RANK[o["layout"]])
                stored[o["name"]] = x
        ntrans = sum(1 for o in e.operands if o["kind"] in TRANSPOSED_KINDS)
        return Plan(e, stored, values, sizes, count, (0 if e.size else 1, rank, ntrans))

    # -- calling ----------------------------------------------------------------------

    def which(self, *args, out=None, **sizes):
        """The exported name a call with these operands goes to first."""
        return next(self._prepare(args, out, sizes))[0].entry.name

    def __call__(self, *args, out=None, **sizes):
        # The catalogue does not know every rule that ties sizes together (the
        # inner sizes of a product): a function that finds its sizes bad has
        # written nothing, and the next that takes the operands is tried.
        bad = None
        for p, outs in self._prepare(args, out, sizes):
            try:
                results = self._run(p, outs)
            except _BadSize as err:
                bad = bad or err
                continue
            return results[0] if len(results) == 1 else tuple(results)
        raise ValueError(str(bad))

    def _prepare(self, args, out, sizes):
        args = [Arg(a) for a in args]
        given = [Arg(x) for x in ((out if isinstance(out, tuple) else (out,)) if out is not None else ())]
        dtype = _dtype(args if any(a.form != "s" for a in args) else given)
        args = [_converted(a, dtype) for a in args]
        single_out = out is not None and not isinstance(out, tuple)
        outs = None if out is None else (out,) if single_out else tuple(out)
        for p in self.plan(args, outs, dtype, sizes):
            yield self._ready(p, args, outs, dtype, sizes), outs

    def _ready(self, p, args, outs, dtype, sizes):
        fresh = self._unalias(p, args, outs)
        if fresh is not None:
            args = fresh
            p = next(self.plan(args, outs, dtype, sizes))
        if outs is not None and p.entry.family in CAN_FAIL:
            # In place: keep the sources, so that a failure can be traced to its object.
            dst = [x for o in outs for x in Arg(o).arrays()]
            p.snapshot = [(x, x.copy()) for a in args for x in a.arrays()
                          if any(np.may_share_memory(x, y) for y in dst)]
        return p

    def _unalias(self, p, args, outs):
        """Copies the sources an output overlaps unless the family works in place on
        exactly that view; returns the new arguments, or None when nothing changed."""
        if outs is None:
            return None
        e = p.entry
        out_arrays = [x for o in outs for x in Arg(o).arrays()]
        slots = e.slots
        changed = False
        new = list(args)
        for i, (o, a) in enumerate(zip(slots, args)):
            for x in a.arrays():
                if not any(np.may_share_memory(x, y) for y in out_arrays):
                    continue
                if not _same_view(a, outs[0]) or not in_place(e, o["name"]):
                    new[i] = Arg([np.array(y) for y in a.items] if a.form == "l" else np.array(a.array))
                    changed = True
                break
        return new if changed else None

    def _run(self, p, outs):
        e = p.entry
        names = dict(p.sizes, objects=p.count if e.array else 1)
        outputs = _outputs(e)
        results = []
        if outs is None:
            outs = []
            for o in outputs:
                # Zeros: a family may leave part of its output alone (LoadIdentity
                # writes width columns of each row and its running diagonal).
                x = np.zeros(_out_shape(o, e, names, p.count), dtype=np.uint32 if o["role"] == "i" else e.dtype)
                outs.append(x)
        else:
            outs = [Arg(x).items if isinstance(x, (list, tuple)) else x for x in outs]
            for o, x in zip(outputs, outs):
                if o["role"] == "o":
                    continue  # checked while choosing
                want = _out_shape(o, e, names, p.count)
                dt = np.uint32 if o["role"] == "i" else e.dtype
                if not isinstance(x, np.ndarray) or x.dtype != dt or x.size != int(np.prod(want)) \
                        or not x.flags.c_contiguous:
                    raise ValueError("out %s: a C-contiguous %s array of shape %s" % (o["name"], dt, want))
        for o, x in zip(outputs, outs):
            if o["role"] == "o" and o["name"] not in p.stored:
                p.stored[o["name"]] = Arg(x)
            elif o["role"] != "o":
                p.stored[o["name"]] = Arg(x)
        for o in e.operands:
            if o["role"] == "b" and o["name"] == "scratch":
                p.stored[o["name"]] = Arg(np.empty(_evaluate(o["rows"], names) * _evaluate(o["cols"], names),
                                                   dtype=e.dtype))
        if e.family in DISPLACED and e.array and p.count > 1:
            self._run_displaced(p, outs)
        elif not (e.array and p.count == 0):
            status = self._call(p, p.count)
            if status != 0:
                self._fail(p, status)
        for o, x in zip(outputs, outs):
            if o["role"] == "r" and not e.array:
                x = x.reshape(-1)[0]
            results.append(x)
        return results

    def _run_displaced(self, p, outs):
        """LUDecomp's array members test the last pivot of object n at n*size elements
        past it (past the operand's end for late objects). Here dst is a buffer of
        ours with the objects' rows interleaved and as much again beside them, all
        1.0 beforehand: object n's displaced place is then row l of object 2n, not
        yet written or padding, so those tests pass and read only this buffer. The
        real last pivots are tested here afterwards, the same way."""
        e = p.entry
        size, itemsize, count = p.sizes["size"], e.dtype.itemsize, p.count
        if 2 * count * size * itemsize >= INT32:
            raise ValueError("%s: at most %d objects a call" % (e.name, INT32 // (2 * size * itemsize) - 1))
        buf = np.ones((size, 2 * count, size), e.dtype)
        dst = np.swapaxes(buf[:, :count], 0, 1)
        given = outs[0]
        p.stored["dst"], p.snapshot, p.args = Arg(dst), [(buf, 1.0)], None
        status = self._call(p, count)
        index = self._first_failure(p, status) if status else count
        rows = p.stored["perm"].array.reshape(count, size)[:index, -1]
        last = dst[np.arange(index), rows, -1]
        passed = np.abs(last.astype(np.float64)) >= 2.0 ** -23   # False for NaN
        if not passed.all():
            index, status = int(np.argmin(passed)), STATUS_ZERO_DIVIDE
        if isinstance(given, list):
            for x, y in zip(given, dst):
                np.copyto(x, y)
        else:
            np.copyto(given, dst)
        if status:
            self._fail(p, status, index)

    def _arguments(self, p):
        """The call's arguments, and for each the bytes it moves by per object (to
        start a call at a later object)."""
        e = p.entry
        keep, argv, steps = [], [], []
        for pname, ctype, role in e.row["params"]:
            step = 0
            if role == "count":
                argv.append(p.count)
            elif role == "size":
                argv.append(p.sizes[pname])
            elif role == "value":
                argv.append(p.values[pname])
            else:
                o, word = e.owner[pname]
                a = p.stored[o["name"]]
                argv.append(_word(o, a, word, ctype, keep))
                if word is None and e.array and p.count:
                    if o["kind"] in ARRAY_KINDS:
                        step = np.dtype(np.uintp).itemsize if ctype.endswith("* const*") else \
                            a.array.strides[0]
                    elif o["role"] in "rib" and "objects" in o["cols"]:
                        step = a.array.nbytes // p.count
            steps.append(step)
        return argv, steps, keep

    def _call(self, p, count, start=0):
        if p.args is None:
            p.args = self._arguments(p)
        argv, steps, _ = p.args
        argv = [x + start * s if s else x for x, s in zip(argv, steps)]
        argv = [count if role == "count" else x for x, (_, _, role) in zip(argv, p.entry.row["params"])]
        return p.entry.function()(*argv)

    def _fail(self, p, status, index=None):
        e = p.entry
        if status == STATUS_BAD_SIZE and (index or 0) == 0:
            raise _BadSize("%s: status %d (bad size)" % (e.name, status))
        if status in (STATUS_BAD_SIZE, STATUS_NULL):
            raise ValueError("%s: status %d (%s)" % (e.name, status,
                             "bad size" if status == STATUS_BAD_SIZE else "null pointer"))
        cls = {STATUS_ZERO_DIVIDE: SingularMatrixError,
               STATUS_NOT_POSITIVE: NotPositiveDefiniteError}.get(status, VorxLinAlgError)
        what = {STATUS_ZERO_DIVIDE: "is singular (a pivot below the threshold)",
                STATUS_NOT_POSITIVE: "is not positive definite"}.get(status, "failed with status %d" % status)
        if not e.array:
            raise cls("%s: the matrix %s" % (e.name, what), e.name, None)
        if index is None:
            index = self._first_failure(p, status)
        raise cls("%s: object %s %s" % (e.name, index, what), e.name, index)

    def _first_failure(self, p, status):
        """Objects run in ascending order and the call stops at the first that fails:
        the least prefix that fails ends with it. Prefixes keep every object's index,
        which some families' checks depend on. An in-place call starts each try from
        its saved sources."""
        def run(count):
            for x, saved in p.snapshot or ():
                np.copyto(x, saved)
            return self._call(p, count)
        lo, hi = 0, p.count - 1      # the failing object is in [lo, hi]
        while lo < hi:
            mid = (lo + hi) // 2
            if run(mid + 1) != 0:
                hi = mid
            else:
                lo = mid + 1
        run(p.count)                 # leave the outputs as the single call did
        return lo


def _signature(a):
    if a.form == "s":
        return "s"
    if a.form == "l":
        return ("l", len(a.items), frozenset((x.dtype.str, x.shape, x.strides) for x in a.items))
    return (a.array.dtype.str, a.array.shape, a.array.strides)


def _outputs(e):
    """The results, dst first, then the others in call order."""
    outs = [o for o in e.operands if o["out"] and not (o["role"] == "b" and o["name"] == "scratch")]
    return sorted(outs, key=lambda o: o["name"] != "dst")


def _out_shape(o, e, names, count):
    batch = (count,) if e.array else ()
    if o["role"] == "o":
        if o["kind"] in VECTOR_KINDS:
            inner = (_evaluate(o["cols"], names),)
        else:
            inner = (_evaluate(o["rows"], names), _evaluate(o["cols"], names))
        return (batch if o["kind"] in ARRAY_KINDS else ()) + inner
    if o["role"] == "r":
        return batch if e.array else (1,)
    cols = o["cols"]
    if cols.startswith("objects*"):
        return batch + (_evaluate(cols[len("objects*"):], names),)
    return (_evaluate(o["rows"], names) * _evaluate(cols, names),)


def _word(o, a, word, ctype, keep):
    """The argument `word` of operand `o` (None: its pointer or table)."""
    if a.form == "a":
        x = a.array
    if word is None:
        if ctype.endswith("* const*"):
            objs = a.items if a.form == "l" else None
            if objs is not None:
                table = np.array([i.ctypes.data for i in objs], dtype=np.uintp)
            else:
                table = x.ctypes.data + np.arange(x.shape[0], dtype=np.intp) * x.strides[0]
                table = table.astype(np.uintp)
            keep.append(table)
            return table.ctypes.data
        return x.ctypes.data
    if word == "ByteShift":
        return 0
    if a.form == "l":
        x = a.items[0] if a.items else np.empty((1,) * 2)
        strides = (0,) + x.strides
    else:
        strides = x.strides if o["kind"] in ARRAY_KINDS or x.ndim == 0 else (0,) + x.strides
    if word == "ObjectStride":
        return strides[0] if o["kind"] in ARRAY_KINDS else 0
    if word == "RowStride":
        return strides[-2]
    return strides[-1]


def _fits_layout(kind, layout, a, itemsize):
    if layout not in LAYOUT_RANK:
        return False
    arrays = a.arrays()
    listed = kind in ARRAY_KINDS and layout in ("L", "LS2")
    if a.form == "l" and not listed:
        return False
    objs = arrays if a.form == "l" else [x[0] if kind in ARRAY_KINDS and x.shape[0] else x for x in arrays]
    if a.form == "a" and kind in ARRAY_KINDS and abs(a.array.strides[0]) >= INT32:
        return False
    if listed and a.form == "l" and len({i.strides for i in arrays}) > 1:
        return False
    for x in objs:
        if any(abs(s) >= INT32 for s in x.strides):
            return False
        if layout in ("", "L") and x.ndim and x.shape[-1] > 1 and x.strides[-1] != itemsize:
            return False
    return True


def _transposed(a):
    if a.form == "l":
        return Arg([np.swapaxes(i, -1, -2) for i in a.items])
    return Arg(np.swapaxes(a.array, -1, -2))


def _same_view(a, out):
    b = Arg(out)
    xs, ys = a.arrays(), b.arrays()
    return len(xs) == len(ys) and all(
        x.ctypes.data == y.ctypes.data and x.shape == y.shape and x.strides == y.strides
        for x, y in zip(xs, ys))


# Families that promise a result with dst the very storage of a source of dst's kind
# (same strides): element by element, or each object read whole before it is written.
# Any other overlap makes the call work on a copy of the source.
# Families whose array members test objects after the first at a displaced place
# (LUDecomp's last pivot): see Operation._run_displaced.
DISPLACED = {"LUDecomp"}
# Sizes the catalogue names apart that the operation needs equal (the inner size of
# a product; the length of the vector, which no shape names): the first takes the
# second's value where no operand gives it, and they are checked before the call.
SAME_SIZE = {"Mul": [("src2Height", "src1Width"), ("src2Len", "src1Width")]}
CAN_FAIL = {"LUDecomp", "QRDecomp", "CholeskyDecomp", "Invert"}
IN_PLACE = {"Add": None, "Sub": None, "Saxpy": None, "LComb": None, "CrossProduct": None,
            "LUDecomp": "src", "CholeskyDecomp": "src", "QRDecomp": "src",
            "CholeskyBackSubst": "src2", "QRBackSubst": "src2"}


def in_place(e, name):
    kinds = {o["name"]: o["kind"] for o in e.operands}
    if kinds.get(name) != kinds.get("dst"):
        return False
    if e.family == "Mul":
        return "c" in e.codes
    if e.family == "Transpose":
        return bool(e.size)
    if e.family not in IN_PLACE:
        return False
    return IN_PLACE[e.family] in (None, name)


def _dtype(args):
    arrays = [x for a in args for x in a.arrays() if x.dtype != np.uint32]
    if arrays and all(x.dtype == np.float32 for x in arrays):
        return DTYPES["32f"]
    return DTYPES["64f"]


def _converted(a, dtype):
    if a.form == "s":
        return a
    if a.form == "l":
        if all(x.dtype == dtype for x in a.items):
            return a
        return Arg([np.asarray(x, dtype=dtype) for x in a.items])
    if a.array.dtype == dtype or a.array.dtype == np.uint32:
        return a
    return Arg(np.asarray(a.array, dtype=dtype))


def _describe(a):
    if a.form == "s":
        return "scalar"
    if a.form == "l":
        return "list of %d %s" % (len(a.items), a.items[0].shape if a.items else "()")
    return str(a.array.shape)


def _snake(name):
    out = ""
    for i, ch in enumerate(name):
        if ch.isupper() and i and (not name[i - 1].isupper() or (i + 1 < len(name) and name[i + 1].islower())):
            out += "_"
        out += ch.lower()
    return out
