// Cholesky factorisation of 4x4 and 6x6 matrices (Contiguous, and the 4x4 32f one in
// Strided and List layouts too), and a full 6x6 64f solve. Every factor is compared
// as L in its lower triangle: vorx stores 1/L[i][i] on the diagonal, so its canonical
// form takes the reciprocal back.
#include "harness.h"
#include "peers/cholesky.h"

#include <vorx.h>

namespace {
using namespace vb;

constexpr std::uint64_t kSeed = 0xc401u;

// Symmetric, diagonally dominant with a positive diagonal: positive definite and well
// conditioned; both triangles filled, as a caller's matrices are.
void makeSpd(const Ctx& c, int op, std::size_t k) {
    const Arr& a = c.a[op];
    const int n = a.rows;
    std::uint64_t s = kSeed ^ (k * 0x9e3779b9ULL);
    const Elem e = a.esz == 8 ? Elem::F64 : Elem::F32;
    for (int i = 0; i < n; ++i)
        for (int j = 0; j <= i; ++j) {
            long double v = i == j ? n + 1 + uniform(s) : 0.5L * uniform(s);
            a.set(e, k, i, j, v);
            a.set(e, k, j, i, v);
        }
}

template <class T, int N> void referenceL(const Ctx& c, std::size_t k, long double* l) {
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j) {
            if (j > i) {
                l[i * N + j] = 0;
                continue;
            }
            long double s = c.a[0].at<T>(k, i, j);
            for (int m = 0; m < j; ++m) s -= l[i * N + m] * l[j * N + m];
            l[i * N + j] = i == j ? std::sqrt(s) : s / l[j * N + j];
        }
}

template <class T, int N> void peerCanon(const Ctx& c, std::size_t k, long double* out) {
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j) out[i * N + j] = j > i ? 0 : static_cast<long double>(c.a[1].at<T>(k, i, j));
}
template <class T, int N> void vorxCanon(const Ctx& c, std::size_t k, long double* out) {
    peerCanon<T, N>(c, k, out);
    for (int i = 0; i < N; ++i) out[i * N + i] = 1 / out[i * N + i];
}

template <class T, int N> Op cholDecomp(const char* id, const char* title, Run vorx) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, elemOf<T>(), N, N}, {Role::Out, elemOf<T>(), N, N}};
    op.tol = 8 * N;
    op.make = [](const Ctx& c, std::size_t k) { makeSpd(c, 0, k); };
    op.reference = referenceL<T, N>;
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::cholDecomp<T, N>(c.p<T>(0), c.p<T>(1), c.n); }, peerCanon<T, N>)
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::cholDecomp<T, N>(c.p<T>(0), c.p<T>(1), c.n); }, peerCanon<T, N>)
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::cholDecomp<T, N>(c.p<T>(0), c.p<T>(1), c.n); }, peerCanon<T, N>)
      .kernel("LAPACK", Lay::C, [](const Ctx& c) { lapack_peer::cholDecomp<T, N>(c.p<T>(0), c.p<T>(1), c.n); }, peerCanon<T, N>)
      .kernel("vorx", Lay::C, std::move(vorx), vorxCanon<T, N>);
    return op;
}

template <class T>
using Decomp = vorxStatus (*)(const T*, int32_t, int32_t, T*, int32_t, int32_t, uint32_t);
template <class T, Decomp<T> Fn> void vorxC(const Ctx& c) {
    Fn(c.p<T>(0), c.os(0), c.rs(0), c.p<T>(1), c.os(1), c.rs(1), c.count());
}

// Solve a x = b: operands a, b, x, then the factor vorx works through.
Op cholSolve6() {
    constexpr int N = 6;
    Op op;
    op.id = "chol_solve_6x6_64f";
    op.title = "6x6 Cholesky solve 64f";
    op.operands = {{Role::In, Elem::F64, N, N}, {Role::In, Elem::F64, 1, N}, {Role::Out, Elem::F64, 1, N},
                   {Role::Work, Elem::F64, N, N}};
    op.tol = 16 * N;
    op.make = [](const Ctx& c, std::size_t k) {
        makeSpd(c, 0, k);
        std::uint64_t s = kSeed + k;
        for (int j = 0; j < N; ++j) c.a[1].set(Elem::F64, k, 0, j, uniform(s));
    };
    op.reference = [](const Ctx& c, std::size_t k, long double* x) {
        long double l[N * N];
        referenceL<double, N>(c, k, l);
        for (int i = 0; i < N; ++i) {
            x[i] = c.a[1].at<double>(k, 0, i);
            for (int j = 0; j < i; ++j) x[i] -= l[i * N + j] * x[j];
            x[i] /= l[i * N + i];
        }
        for (int i = N - 1; i >= 0; --i) {
            for (int j = i + 1; j < N; ++j) x[i] -= l[j * N + i] * x[j];
            x[i] /= l[i * N + i];
        }
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::cholSolve<double, N>(c.p<double>(0), c.p<double>(1), c.p<double>(2), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::cholSolve<double, N>(c.p<double>(0), c.p<double>(1), c.p<double>(2), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::cholSolve<double, N>(c.p<double>(0), c.p<double>(1), c.p<double>(2), c.n); })
      .kernel("LAPACK", Lay::C, [](const Ctx& c) { lapack_peer::cholSolve<double, N>(c.p<double>(0), c.p<double>(1), c.p<double>(2), c.n); })
      .kernel("vorx", Lay::C, [](const Ctx& c) {
          vorxCholeskyDecomp_ma_64f_6x6(c.p<double>(0), c.os(0), c.rs(0), c.p<double>(3), c.os(3), c.rs(3), c.count());
          vorxCholeskyBackSubst_mava_64f_6x6(c.p<double>(3), c.os(3), c.rs(3), c.p<double>(1), c.os(1), c.p<double>(2),
                                             c.os(2), c.count());
      });
    return op;
}

void registerCholesky() {
    auto& r = registry();
    r.push_back(cholDecomp<float, 4>("chol_4x4_32f", "4x4 Cholesky 32f", vorxC<float, vorxCholeskyDecomp_ma_32f_4x4>));
    r.push_back(cholDecomp<float, 6>("chol_6x6_32f", "6x6 Cholesky 32f", vorxC<float, vorxCholeskyDecomp_ma_32f_6x6>));
    r.push_back(cholDecomp<double, 4>("chol_4x4_64f", "4x4 Cholesky 64f", vorxC<double, vorxCholeskyDecomp_ma_64f_4x4>));
    r.push_back(cholDecomp<double, 6>("chol_6x6_64f", "6x6 Cholesky 64f", vorxC<double, vorxCholeskyDecomp_ma_64f_6x6>));

    // 4x4 32f in the Strided and List layouts.
    Op op = cholDecomp<float, 4>("chol_4x4_32f_layouts", "4x4 Cholesky 32f", nullptr);
    op.kernels.clear();
    constexpr auto canon = peerCanon<float, 4>;
    op.kernel("plain -O2", Lay::S2, [](const Ctx& c) { plain_O2::cholDecompS<float, 4>(c.p<float>(0), c.p<float>(1), c.os(0), c.rs(0), c.es(0), c.n); }, canon)
      .kernel("plain -O3", Lay::S2, [](const Ctx& c) { plain_O3::cholDecompS<float, 4>(c.p<float>(0), c.p<float>(1), c.os(0), c.rs(0), c.es(0), c.n); }, canon)
      .kernel("Eigen", Lay::S2, [](const Ctx& c) { eigen_peer::cholDecompS<float, 4>(c.p<float>(0), c.p<float>(1), c.os(0), c.rs(0), c.es(0), c.n); }, canon)
      .kernel("plain -O2", Lay::L, [](const Ctx& c) { plain_O2::cholDecompL<float, 4>(c.t<float>(0), c.t<float>(1), c.n); }, canon)
      .kernel("plain -O3", Lay::L, [](const Ctx& c) { plain_O3::cholDecompL<float, 4>(c.t<float>(0), c.t<float>(1), c.n); }, canon)
      .kernel("Eigen", Lay::L, [](const Ctx& c) { eigen_peer::cholDecompL<float, 4>(c.t<float>(0), c.t<float>(1), c.n); }, canon)
      .kernel("vorx", Lay::S2, [](const Ctx& c) {
          vorxCholeskyDecomp_ma_32f_4x4_S2(c.p<float>(0), c.os(0), c.rs(0), c.es(0), c.p<float>(1), c.os(1), c.rs(1),
                                           c.es(1), c.count());
      }, vorxCanon<float, 4>)
      .kernel("vorx", Lay::L, [](const Ctx& c) {
          vorxCholeskyDecomp_ma_32f_4x4_L(c.t<float>(0), 0, c.rs(0), c.t<float>(1), 0, c.rs(1), c.count());
      }, vorxCanon<float, 4>);
    r.push_back(std::move(op));
    r.push_back(cholSolve6());
}

const Registrar reg(registerCholesky);
} // namespace
