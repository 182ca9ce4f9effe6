"""vorx over NumPy: one function per family of the library, over single objects,
batches (a leading axis) and lists of arrays, in float32 or float64.

    >>> import numpy as np, vorx
    >>> a = np.random.rand(1000, 4, 4)
    >>> vorx.mul(a, a).shape
    (1000, 4, 4)

The functions are made from the library's catalogue when the package is imported:
`vorx.add`, `vorx.mul`, `vorx.lu_decomp`, `vorx.det`, ... (see `vorx.families`). Each
takes its sources in the order of the operand codes of the library's names, returns
dst first and the other results after it, and takes `out=` (a tuple where there are
several results). A status of the library raises a `numpy.linalg.LinAlgError`
subclass naming the first failing object; operands no form takes raise ValueError
before any call.
"""
import numpy as np

from . import _catalogue
from ._core import (NotPositiveDefiniteError, Operation, SingularMatrixError, VorxLinAlgError,
                    Entry, _snake)

__all__ = ["VorxLinAlgError", "SingularMatrixError", "NotPositiveDefiniteError", "families",
           "library_path", "T"]

_lib, library_path = _catalogue.load_library()
#: Every built function of the loaded library, by name.
entries = {}
#: The Python entries, by family name of the library (`LUDecomp` -> vorx.lu_decomp).
families = {}


def _build():
    grouped = {}
    for row in _catalogue.load_table():
        if row["prefix"] != "vorx":
            continue   # internal kernels with a name of their own
        e = Entry(row, _lib)
        entries[e.name] = e
        grouped.setdefault(e.family, []).append(e)
    for family, es in grouped.items():
        op = Operation(family, es)
        name = _snake(family)

        def fn(*args, _op=op, **kw):
            return _op(*args, **kw)
        fn.__name__ = fn.__qualname__ = name
        codes = ", ".join(sorted(op.by_code))
        fn.__doc__ = "vorx%s over NumPy arrays (operand codes %s)." % (family, codes)
        fn.operation = op
        families[family] = fn
        globals()[name] = fn
        __all__.append(name)


def T(a):
    """The transposed view of a matrix or of each matrix of a batch (no copy)."""
    return np.swapaxes(a, -1, -2)


_build()
