"""The operations of vorx over Dask arrays chunked along the batch axis.

Every Dask operand is a batch (its first axis); NumPy arrays and scalars go whole to
every block, as single objects. Each block is one call of the library, so the work
spreads over any scheduler's workers; a status raises the same exception as the NumPy
form, with `index` counted over the whole batch.

    >>> import dask.array as da, vorx.dask
    >>> a = da.random.random((10**6, 4, 4), chunks=10**5)
    >>> vorx.dask.det(a).compute()
"""
import string

import dask.array as da
import numpy as np

import vorx
from ._core import Arg, VorxLinAlgError, _converted, _dtype, _out_shape, _outputs

__all__ = []


def _block(fn, count, *blocks):
    """One block: the call, its results as one record per object where there are
    several, and a failing object's index moved to the whole batch."""
    start, args = int(blocks[-1][0]) if len(blocks[-1]) else 0, blocks[:-1]
    try:
        res = fn(*args)
    except VorxLinAlgError as err:
        index = None if err.index is None else err.index + start
        raise type(err)(err.args[0].replace("object %s" % err.index, "object %s" % index),
                        err.function, index) from None
    if count == 1:
        return res
    rec = np.empty(len(res[0]), dtype=[("r%d" % i, r.dtype, r.shape[1:]) for i, r in enumerate(res)])
    for i, r in enumerate(res):
        rec["r%d" % i] = r
    return rec


def _wrap(family, fn):
    op = fn.operation

    def dask_fn(*args, **sizes):
        lazy = [a for a in args if isinstance(a, da.Array)]
        if not lazy:
            raise ValueError("vorx.dask.%s: no Dask operand (use vorx.%s)" % (fn.__name__, fn.__name__))
        n = lazy[0].shape[0]
        # Choose the function on one object per batch; only shapes are looked at.
        sample = [Arg(np.zeros((1,) + a.shape[1:], a.dtype)) if isinstance(a, da.Array) else Arg(a)
                  for a in args]
        dtype = _dtype(sample)
        plan = next(op.plan([_converted(a, dtype) for a in sample], None, dtype, dict(sizes, count=1)))
        e = plan.entry
        names = dict(plan.sizes, objects=1)
        outs = [(_out_shape(o, e, names, 1)[1:], np.uint32 if o["role"] == "i" else e.dtype)
                for o in _outputs(e)]
        letters = iter(string.ascii_letters.replace("i", ""))
        pairs = []
        for a in args:
            if isinstance(a, da.Array):
                a = a.rechunk({k: -1 for k in range(1, a.ndim)})
                pairs += [a, "i" + "".join(next(letters) for _ in range(a.ndim - 1))]
            else:
                pairs += [a, None]
        starts = da.arange(n, chunks=lazy[0].chunks[0])
        pairs += [starts, "i"]
        call = lambda *b: fn(*b, **sizes)  # noqa: E731
        if len(outs) == 1:
            shape, dt = outs[0]
            new = "".join(next(letters) for _ in shape)
            return da.blockwise(_block, "i" + new, call, None, 1, None, *pairs,
                                new_axes=dict(zip(new, shape)), dtype=dt, concatenate=True,
                                meta=np.empty((0,) * (1 + len(shape)), dt))
        rec = np.dtype([("r%d" % i, dt, shape) for i, (shape, dt) in enumerate(outs)])
        records = da.blockwise(_block, "i", call, None, len(outs), None, *pairs, dtype=rec,
                               concatenate=True, meta=np.empty((0,), rec))
        return tuple(records.map_blocks(lambda r, f=f: r[f], dtype=dt,
                                        chunks=(records.chunks[0],) + tuple((s,) for s in shape),
                                        new_axis=list(range(1, 1 + len(shape))) or None,
                                        meta=np.empty((0,) * (1 + len(shape)), dt))
                     for f, (shape, dt) in zip(rec.names, outs))

    dask_fn.__name__ = dask_fn.__qualname__ = fn.__name__
    dask_fn.__doc__ = "%s, blockwise over Dask arrays chunked along the batch axis." % fn.__doc__
    return dask_fn


for _family, _fn in vorx.families.items():
    globals()[_fn.__name__] = _wrap(_family, _fn)
    __all__.append(_fn.__name__)
