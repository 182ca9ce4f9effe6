"""The Python package against NumPy: a sample of every family, each stride case,
statuses as exceptions, out= and in place, and bit for bit against a direct call."""
import ctypes

import numpy as np
import pytest

import vorx

RNG = np.random.default_rng(21)
TYPES = [np.float32, np.float64]
TOL = {np.float32: dict(rtol=2e-4, atol=2e-4), np.float64: dict(rtol=1e-9, atol=1e-9)}


def rand(dt, *shape):
    return RNG.uniform(-1, 1, shape).astype(dt)


def dominant(dt, k, n):
    return (rand(np.float64, k, n, n) + n * np.eye(n)).astype(dt)


def spd(dt, k, n):
    a = rand(np.float64, k, n, n)
    return (a @ np.swapaxes(a, -1, -2) + n * np.eye(n)).astype(dt)


def solve(a, b):
    return np.linalg.solve(a.astype(np.float64), b.astype(np.float64)[..., None])[..., 0]


# One sample per family: the operands of a batch of k objects of size n, and what
# NumPy gives for them. A family the catalogue builds later needs a line here.
def _samples(dt, k, n):
    m, m2, v, v2 = rand(dt, k, n, n), rand(dt, k, n, n), rand(dt, k, n), rand(dt, k, n)
    a, b, s = dominant(dt, k, n), rand(dt, k, n), spd(dt, k, n)
    return {
        "Add": [((m, m2), m + m2), ((v, 1.5), v + 1.5)],
        "Sub": [((m, m2[0]), m - m2[0]), ((2.0, v), 2.0 - v)],
        "Mul": [((m, m2), m @ m2), ((m, 0.5), m * 0.5), ((m, v), np.einsum("kij,kj->ki", m, v))],
        "Saxpy": [((v, 3.0, v2), v * 3 + v2)],
        "LComb": [((v, 3.0, v2, -2.0), v * 3 - 2 * v2)],
        "DotProduct": [((v, v2), (v * v2).sum(-1))],
        "L2Norm": [((v,), np.linalg.norm(v, axis=-1))],
        "CrossProduct": [((v[:, :3], v2[:, :3]), np.cross(v[:, :3], v2[:, :3]))],
        "Gaxpy": [((m[0], v, v2), v @ m[0].T + v2)],
        "Trace": [((m,), np.trace(m, axis1=1, axis2=2))],
        "FrobNorm": [((m,), np.linalg.norm(m, axis=(1, 2)))],
        "Transpose": [((m,), np.swapaxes(m, 1, 2))],
        "Copy": [((m,), m)],
        "Extract": [((m[:, ::-1],), m[:, ::-1].reshape(k, -1))],
        "Det": [((a,), np.linalg.det(a.astype(np.float64)))],
        "Invert": [((a,), np.linalg.inv(a.astype(np.float64)))],
        "LUDecomp": [((a,), lambda r: vorx.lu_back_subst(r[0], r[1], b), solve(a, b))],
        "LUBackSubst": [((*vorx.lu_decomp(a), b), solve(a, b))],
        "CholeskyDecomp": [((s,), lambda r: np.tril(r, -1) + np.eye(n) / np.diagonal(r, 0, -2, -1)[..., None],
                            np.linalg.cholesky(s.astype(np.float64)))],
        "CholeskyBackSubst": [((vorx.cholesky_decomp(s), b), solve(s, b))],
        "QRDecomp": [((a,), lambda r: vorx.qr_back_subst(r, b), solve(a, b)),
                     ((a,), lambda r: np.abs(np.triu(r)), np.abs(np.linalg.qr(a.astype(np.float64))[1]))],
        "QRBackSubst": [((vorx.qr_decomp(a), b), solve(a, b))],
    }


def test_every_family_has_an_entry():
    assert set(vorx.families) == {e.family for e in vorx.entries.values()}
    missing = set(vorx.families) - set(_samples(np.float64, 1, 3)) - {"LoadIdentity"}
    assert not missing, "families without a sample here: %s" % sorted(missing)
    # No sources: the sizes the shapes cannot give come by name; a running diagonal.
    ident = vorx.load_identity(width=3, height=3, count=2)
    np.testing.assert_array_equal(ident[1], np.eye(3, 9, 3))


@pytest.mark.parametrize("dt", TYPES)
@pytest.mark.parametrize("n", [3, 4, 6, 7])
@pytest.mark.parametrize("family", sorted(_samples(np.float64, 1, 3)))
def test_family_against_numpy(family, n, dt):
    for case in _samples(dt, 5, n)[family]:
        args, want = case[0], case[-1]
        got = vorx.families[family](*args)
        if len(case) == 3:
            got = case[1](got)
        assert got.shape == want.shape
        np.testing.assert_allclose(got, want, **TOL[dt])
        # One object alone, where every source is a batch.
        if len(case) == 2 and all(np.ndim(x) != 1 for x in args) and family not in ("Gaxpy", "Extract"):
            one = vorx.families[family](*[x[1] if np.ndim(x) and len(x) == 5 else x for x in args])
            np.testing.assert_allclose(one, want[1], **TOL[dt])


def _forms(a):
    """The stride cases of a batch: C order, each object Fortran order, a slice of a
    larger batch, negative strides (objects; rows and elements), elements apart, and
    a list."""
    big = np.zeros((2 * a.shape[0],) + a.shape[1:], a.dtype)
    big[::2] = a
    wide = np.zeros(a.shape[:-1] + (2 * a.shape[-1],), a.dtype)
    wide[..., ::2] = a
    fortran = np.swapaxes(np.swapaxes(a, -1, -2).copy(), -1, -2)
    return {"C": (a, ""), "F": (fortran, ""), "sliced": (big[::2], ""), "negative": (a[::-1].copy()[::-1], ""),
            "reversed": (a[:, ::-1, ::-1].copy()[:, ::-1, ::-1], "_S2"),
            "elements": (wide[..., ::2], "_S2"), "list": (list(a), "_L")}


@pytest.mark.parametrize("dt", TYPES)
@pytest.mark.parametrize("form", ["C", "F", "sliced", "negative", "reversed", "elements", "list"])
def test_strides_choose_the_form_and_agree(form, dt):
    a, b = dominant(dt, 6, 4), rand(dt, 6, 4, 4)
    x, suffix = _forms(a)[form]
    name = vorx.mul.operation.which(x, b)
    assert name.endswith("_4x4" + suffix), name
    assert ("maT" in name) == (form == "F")
    np.testing.assert_allclose(vorx.mul(x, b), a @ b, **TOL[dt])
    np.testing.assert_allclose(vorx.det(x), np.linalg.det(a.astype(np.float64)), **TOL[dt])
    out = [np.empty((4, 4), dt) for _ in range(6)] if form == "list" else np.empty_like(a)
    vorx.mul(b, x, out=out)
    np.testing.assert_allclose(np.array(out), b @ a, **TOL[dt])


def test_bits_equal_a_direct_call():
    a, b = rand(np.float32, 3, 4, 4), rand(np.float32, 3, 4, 4)
    want = np.empty_like(a)
    p = ctypes.c_void_p
    fn = vorx._lib.vorxMul_mama_32f_4x4
    fn.argtypes = [p, ctypes.c_int32, ctypes.c_int32] * 3 + [ctypes.c_uint32]
    assert fn(a.ctypes.data, 64, 16, b.ctypes.data, 64, 16, want.ctypes.data, 64, 16, 3) == 0
    assert vorx.mul(a, b).tobytes() == want.tobytes()


def test_statuses_raise_naming_the_first_failing_object():
    a = dominant(np.float64, 8, 4)
    a[5] = 0
    a[6] = 0
    with pytest.raises(vorx.SingularMatrixError) as err:
        vorx.lu_decomp(a)
    assert isinstance(err.value, np.linalg.LinAlgError) and err.value.index == 5
    # A zero last pivot alone, in an object after the first.
    a[2] = np.diag([1.0, 1.0, 1.0, 0.0])
    with pytest.raises(vorx.SingularMatrixError, match="object 2"):
        vorx.lu_decomp(a)
    s = spd(np.float32, 4, 3)
    s[2, 1, 1] = -5
    with pytest.raises(vorx.NotPositiveDefiniteError, match="object 2"):
        vorx.cholesky_decomp(s)
    # In place: the sources are overwritten, the object is still found.
    with pytest.raises(vorx.NotPositiveDefiniteError) as err:
        vorx.cholesky_decomp(s, out=s)
    assert err.value.index == 2


def test_bad_shapes_raise_before_the_call():
    with pytest.raises(ValueError):
        vorx.mul(rand(np.float32, 5, 3, 3), rand(np.float32, 4, 3, 3))
    with pytest.raises(ValueError):
        vorx.add(rand(np.float64, 3), rand(np.float64, 4))
    with pytest.raises(ValueError):
        vorx.mul(rand(np.float64, 2, 3, 3), rand(np.float64, 2, 3, 3), out=np.empty((2, 3, 4)))


def test_out_and_in_place():
    a, b = rand(np.float64, 4, 5, 5), rand(np.float64, 4, 5, 5)
    want_sum, want_product = a + b, a @ b
    assert vorx.add(a, b, out=a) is a                 # element-wise: truly in place
    np.testing.assert_array_equal(a, want_sum)
    a -= b
    vorx.mul(a, b, out=a)                             # a product works on a copy
    np.testing.assert_allclose(a, want_product, **TOL[np.float64])
