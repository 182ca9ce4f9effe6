"""vorx.dask on a local cluster of two worker processes: a batch of several chunks,
and a failing object in a later chunk named by its index in the whole batch."""
import numpy as np
import pytest

import vorx

da = pytest.importorskip("dask.array")
distributed = pytest.importorskip("distributed")
import vorx.dask  # noqa: E402


@pytest.fixture(scope="module")
def client():
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                  dashboard_address=None) as cluster, distributed.Client(cluster) as c:
        yield c


def test_blockwise_results_equal_the_numpy_form(client):
    rng = np.random.default_rng(3)
    a = rng.uniform(-1, 1, (1000, 4, 4)) + 4 * np.eye(4)
    b = rng.uniform(-1, 1, (1000, 4))
    x, y = da.from_array(a, chunks=300), da.from_array(b, chunks=250)
    assert vorx.dask.mul(x, a[0]).compute().tobytes() == vorx.mul(a, a[0]).tobytes()
    assert vorx.dask.det(x).compute().tobytes() == vorx.det(a).tobytes()
    lu, perm = vorx.dask.lu_decomp(x)
    assert lu.chunks[0] == x.chunks[0]
    got = vorx.dask.lu_back_subst(lu, perm, y).compute()
    np.testing.assert_allclose(got, np.linalg.solve(a, b[..., None])[..., 0], rtol=1e-9, atol=1e-12)


def test_a_failing_object_in_a_later_chunk(client):
    s = np.repeat(np.eye(3)[None], 100, axis=0).astype(np.float32)
    s[77, 2, 2] = -1
    with pytest.raises(vorx.NotPositiveDefiniteError) as err:
        vorx.dask.cholesky_decomp(da.from_array(s, chunks=30)).compute()
    assert err.value.index == 77 and "object 77" in str(err.value)
