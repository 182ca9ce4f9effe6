// Householder QR factorisations (square, and a tall one of run-time size) and a full
// 6x6 64f solve. A factor is checked by what it stands for: Q R, with Q made from
// the stored reflectors in long double, must give the matrix back.
#include "harness.h"
#include "peers/qr.h"

#include <vorx.h>

namespace {
using namespace vb;

constexpr std::uint64_t kSeed = 0x9e3779b9u;

// Well conditioned: a diagonal of +-4 over entries in [-0.5, 0.5).
void makeDominant(const Ctx& c, int op, std::size_t k) {
    const Arr& a = c.a[op];
    std::uint64_t s = kSeed + k * 0x1000193ULL;
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j) {
            long double v = 0.5L * uniform(s) + (i == j ? (uniform(s) < 0 ? -4 : 4) : 0);
            a.set(a.esz == 8 ? Elem::F64 : Elem::F32, k, i, j, v);
        }
}

// Q R of the factor in operand 2: Q = H0 H1 ... built on the identity (each H = I -
// 2 v v' / v'v, v = (1, tail)), times the upper triangle.
template <class T, int M, int N> void rebuilt(const Ctx& c, std::size_t k, long double* out) {
    auto f = [&](int i, int j) -> long double { return c.a[2].at<T>(k, i, j); };
    long double q[M][M];
    for (int i = 0; i < M; ++i)
        for (int j = 0; j < M; ++j) q[i][j] = i == j;
    for (int r = (M == N ? N - 1 : N) - 1; r >= 0; --r) {
        long double vv = 1;
        for (int i = r + 1; i < M; ++i) vv += f(i, r) * f(i, r);
        for (int j = 0; j < M; ++j) {
            long double t = q[r][j];
            for (int i = r + 1; i < M; ++i) t += f(i, r) * q[i][j];
            t *= 2 / vv;
            q[r][j] -= t;
            for (int i = r + 1; i < M; ++i) q[i][j] -= f(i, r) * t;
        }
    }
    for (int i = 0; i < M; ++i)
        for (int j = 0; j < N; ++j) {
            out[i * N + j] = 0;
            for (int l = 0; l <= j && l < M; ++l) out[i * N + j] += q[i][l] * f(l, j);
        }
}

// Operands: the matrix, vorx's scratch (one for the call), the factor.
template <class T, int M, int N> Op qrDecomp(const char* id, const char* title) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, elemOf<T>(), M, N}, {Role::Work, elemOf<T>(), 1, M, true},
                   {Role::Out, elemOf<T>(), M, N}};
    op.tol = 4 * M;
    op.make = [](const Ctx& c, std::size_t k) { makeDominant(c, 0, k); };
    op.reference = [](const Ctx& c, std::size_t k, long double* out) {
        for (int e = 0; e < M * N; ++e) out[e] = c.a[0].at<T>(k, e / N, e % N);
    };
    return op;
}

template <class T, int M, int N> Op& peers(Op& op) {
    Canon canon = rebuilt<T, M, N>;
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::qrDecomp<T, M, N>(c.p<T>(0), c.p<T>(2), c.n); }, canon)
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::qrDecomp<T, M, N>(c.p<T>(0), c.p<T>(2), c.n); }, canon)
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::qrDecomp<T, M, N>(c.p<T>(0), c.p<T>(2), c.n); }, canon)
      .kernel("LAPACK", Lay::C, [](const Ctx& c) { lapack_peer::qrDecomp<T, M, N>(c.p<T>(0), c.p<T>(2), c.n); }, canon);
    return op;
}

template <class T>
using Decomp = vorxStatus (*)(const T*, int32_t, int32_t, T*, T*, int32_t, int32_t, uint32_t);
template <class T, int N, Decomp<T> Fn> Op square(const char* id, const char* title) {
    Op op = qrDecomp<T, N, N>(id, title);
    peers<T, N, N>(op).kernel("vorx", Lay::C, [](const Ctx& c) {
        Fn(c.p<T>(0), c.os(0), c.rs(0), c.p<T>(1), c.p<T>(2), c.os(2), c.rs(2), c.count());
    }, rebuilt<T, N, N>);
    return op;
}

// Solve a x = b: operands a, b, x, then vorx's factors and its scratch.
Op qrSolve6() {
    constexpr int N = 6;
    Op op;
    op.id = "qr_solve_6x6_64f";
    op.title = "6x6 QR solve 64f";
    op.operands = {{Role::In, Elem::F64, N, N}, {Role::In, Elem::F64, 1, N}, {Role::Out, Elem::F64, 1, N},
                   {Role::Work, Elem::F64, N, N}, {Role::Work, Elem::F64, 1, N, true}};
    op.tol = 16 * N;
    op.make = [](const Ctx& c, std::size_t k) {
        makeDominant(c, 0, k);
        std::uint64_t s = kSeed ^ k;
        for (int j = 0; j < N; ++j) c.a[1].set(Elem::F64, k, 0, j, uniform(s));
    };
    // Gauss-Jordan in long double; the matrices need no exchanges.
    op.reference = [](const Ctx& c, std::size_t k, long double* x) {
        long double m[N][N + 1];
        for (int i = 0; i < N; ++i) {
            for (int j = 0; j < N; ++j) m[i][j] = c.a[0].at<double>(k, i, j);
            m[i][N] = c.a[1].at<double>(k, 0, i);
        }
        for (int p = 0; p < N; ++p)
            for (int r = 0; r < N; ++r)
                if (r != p) {
                    long double f = m[r][p] / m[p][p];
                    for (int j = p; j <= N; ++j) m[r][j] -= f * m[p][j];
                }
        for (int i = 0; i < N; ++i) x[i] = m[i][N] / m[i][i];
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::qrSolve<double, N>(c.p<double>(0), c.p<double>(1), c.p<double>(2), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::qrSolve<double, N>(c.p<double>(0), c.p<double>(1), c.p<double>(2), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::qrSolve<double, N>(c.p<double>(0), c.p<double>(1), c.p<double>(2), c.n); })
      .kernel("LAPACK", Lay::C, [](const Ctx& c) { lapack_peer::qrSolve<double, N>(c.p<double>(0), c.p<double>(1), c.p<double>(2), c.n); })
      .kernel("vorx", Lay::C, [](const Ctx& c) {
          vorxQRDecomp_ma_64f_6x6(c.p<double>(0), c.os(0), c.rs(0), c.p<double>(4), c.p<double>(3), c.os(3), c.rs(3),
                                  c.count());
          vorxQRBackSubst_mava_64f_6x6(c.p<double>(3), c.os(3), c.rs(3), c.p<double>(4), c.p<double>(1), c.os(1),
                                       c.p<double>(2), c.os(2), c.count());
      });
    return op;
}

void registerQR() {
    auto& r = registry();
    r.push_back(square<float, 4, vorxQRDecomp_ma_32f_4x4>("qr_4x4_32f", "4x4 QR 32f"));
    r.push_back(square<float, 6, vorxQRDecomp_ma_32f_6x6>("qr_6x6_32f", "6x6 QR 32f"));
    r.push_back(square<double, 4, vorxQRDecomp_ma_64f_4x4>("qr_4x4_64f", "4x4 QR 64f"));
    r.push_back(square<double, 6, vorxQRDecomp_ma_64f_6x6>("qr_6x6_64f", "6x6 QR 64f"));

    // 4x4 32f in the Strided and List layouts.
    Op op = qrDecomp<float, 4, 4>("qr_4x4_32f_layouts", "4x4 QR 32f");
    Canon canon = rebuilt<float, 4, 4>;
    op.kernel("plain -O2", Lay::S2, [](const Ctx& c) { plain_O2::qrDecompS<float, 4, 4>(c.p<float>(0), c.p<float>(2), c.os(0), c.rs(0), c.es(0), c.n); }, canon)
      .kernel("plain -O3", Lay::S2, [](const Ctx& c) { plain_O3::qrDecompS<float, 4, 4>(c.p<float>(0), c.p<float>(2), c.os(0), c.rs(0), c.es(0), c.n); }, canon)
      .kernel("Eigen", Lay::S2, [](const Ctx& c) { eigen_peer::qrDecompS<float, 4, 4>(c.p<float>(0), c.p<float>(2), c.os(0), c.rs(0), c.es(0), c.n); }, canon)
      .kernel("plain -O2", Lay::L, [](const Ctx& c) { plain_O2::qrDecompL<float, 4, 4>(c.t<float>(0), c.t<float>(2), c.n); }, canon)
      .kernel("plain -O3", Lay::L, [](const Ctx& c) { plain_O3::qrDecompL<float, 4, 4>(c.t<float>(0), c.t<float>(2), c.n); }, canon)
      .kernel("Eigen", Lay::L, [](const Ctx& c) { eigen_peer::qrDecompL<float, 4, 4>(c.t<float>(0), c.t<float>(2), c.n); }, canon)
      .kernel("vorx", Lay::S2, [](const Ctx& c) {
          vorxQRDecomp_ma_32f_4x4_S2(c.p<float>(0), c.os(0), c.rs(0), c.es(0), c.p<float>(1), c.p<float>(2), c.os(2),
                                     c.rs(2), c.es(2), c.count());
      }, canon)
      .kernel("vorx", Lay::L, [](const Ctx& c) {
          vorxQRDecomp_ma_32f_4x4_L(c.t<float>(0), 0, c.rs(0), c.p<float>(1), c.t<float>(2), 0, c.rs(2), c.count());
      }, canon);
    r.push_back(std::move(op));

    // Six rows, four columns, through the run-time form.
    Op tall = qrDecomp<float, 6, 4>("qr_6x4_32f", "6x4 QR 32f (run-time size)");
    peers<float, 6, 4>(tall).kernel("vorx", Lay::C, [](const Ctx& c) {
        vorxQRDecomp_ma_32f(c.p<float>(0), c.os(0), c.rs(0), c.p<float>(1), c.p<float>(2), c.os(2), c.rs(2), 4, 6,
                            c.count());
    }, rebuilt<float, 6, 4>);
    r.push_back(std::move(tall));
    r.push_back(qrSolve6());
}

const Registrar reg(registerQR);
} // namespace
