// Inverses of arrays of 3x3, 4x4 and 6x6 matrices in both types (Contiguous, the 4x4
// 32f also Strided and List), and the run-time size at 4x4 64f with its scratch
// buffer, whose adjugate by one elimination per cofactor is the slow path its
// members keep.
#include "harness.h"
#include "peers/invert.h"

#include <vorx.h>

#include <cmath>

namespace {
using namespace vb;

constexpr std::uint64_t kSeed = 0x1f7u;

// Long double Gauss-Jordan with partial pivoting of object k.
template <class T, int N> void referenceInverse(const Ctx& c, std::size_t k, long double* out) {
    long double m[N][2 * N];
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j) {
            m[i][j] = c.a[0].at<T>(k, i, j);
            m[i][N + j] = i == j;
        }
    for (int col = 0; col < N; ++col) {
        int best = col;
        for (int r = col + 1; r < N; ++r)
            if (std::fabs(m[r][col]) > std::fabs(m[best][col])) best = r;
        for (int j = 0; j < 2 * N; ++j) std::swap(m[col][j], m[best][j]);
        long double p = m[col][col];
        for (int j = 0; j < 2 * N; ++j) m[col][j] /= p;
        for (int r = 0; r < N; ++r)
            if (r != col)
                for (int j = 2 * N - 1; j >= col; --j) m[r][j] -= m[r][col] * m[col][j];
    }
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j) out[i * N + j] = m[i][N + j];
}

// The rows of makePivoting put back in the order of their dominant elements (the
// only ones beyond 2 in magnitude): a dominant diagonal, so that a00 is a good first
// pivot for every scheme, the packed 5x5 and 6x6 taking it without a search.
template <class T, int N> void dominantRows(const Ctx& c, std::size_t k) {
    makePivoting(c, 0, k, kSeed);
    const Arr& a = c.a[0];
    T m[N][N];
    int to[N];
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j)
            if (std::fabs(m[i][j] = a.at<T>(k, i, j)) > 2) to[i] = j;
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j) a.at<T>(k, to[i], j) = m[i][j];
}

template <class T, int N> Op invertOp(const char* id, const char* title) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, elemOf<T>(), N, N}, {Role::Out, elemOf<T>(), N, N}};
    op.tol = 16 * N;
    op.make = dominantRows<T, N>;
    op.reference = referenceInverse<T, N>;
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::invert<T, N>(c.p<T>(0), c.p<T>(1), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::invert<T, N>(c.p<T>(0), c.p<T>(1), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::invert<T, N>(c.p<T>(0), c.p<T>(1), c.n); })
      .kernel("LAPACK", Lay::C, [](const Ctx& c) { lapack_peer::invert<T, N>(c.p<T>(0), c.p<T>(1), c.n); });
    return op;
}

template <class T, auto Fn> void vorxFixed(Op& op) {
    op.kernel("vorx", Lay::C, [](const Ctx& c) {
        Fn(c.p<T>(0), c.os(0), c.rs(0), c.p<T>(1), c.os(1), c.rs(1), c.count());
    });
}

// The 4x4 32f in Strided and List layouts.
void layouts(Op& op) {
    op.kernel("vorx", Lay::S2, [](const Ctx& c) {
        vorxInvert_ma_32f_4x4_S2(c.p<float>(0), c.os(0), c.rs(0), c.es(0), c.p<float>(1), c.os(1), c.rs(1), c.es(1),
                                 c.count());
    });
    op.kernel("plain -O2", Lay::S2, [](const Ctx& c) { plain_O2::invertS<float, 4>(c.p<float>(0), c.p<float>(1), c.os(0), c.rs(0), c.es(0), c.n); })
      .kernel("plain -O3", Lay::S2, [](const Ctx& c) { plain_O3::invertS<float, 4>(c.p<float>(0), c.p<float>(1), c.os(0), c.rs(0), c.es(0), c.n); })
      .kernel("Eigen", Lay::S2, [](const Ctx& c) { eigen_peer::invertS<float, 4>(c.p<float>(0), c.p<float>(1), c.os(0), c.rs(0), c.es(0), c.n); });
    op.kernel("vorx", Lay::L, [](const Ctx& c) {
        vorxInvert_ma_32f_4x4_L(c.t<float>(0), 0, c.rs(0), c.t<float>(1), 0, c.rs(1), c.count());
    });
    op.kernel("plain -O2", Lay::L, [](const Ctx& c) { plain_O2::invertL<float, 4>(c.t<float>(0), c.t<float>(1), c.n); })
      .kernel("plain -O3", Lay::L, [](const Ctx& c) { plain_O3::invertL<float, 4>(c.t<float>(0), c.t<float>(1), c.n); })
      .kernel("Eigen", Lay::L, [](const Ctx& c) { eigen_peer::invertL<float, 4>(c.t<float>(0), c.t<float>(1), c.n); });
}

Op anySize() {
    Op op = invertOp<double, 4>("invert_any_4x4_64f", "4x4 inverse 64f, run-time size");
    op.operands.push_back({Role::Work, Elem::F64, 1, 4 * 4 + 4, true});
    op.kernel("vorx", Lay::C, [](const Ctx& c) {
        vorxInvert_ma_64f(c.p<double>(0), c.os(0), c.rs(0), 4, c.p<double>(2), c.p<double>(1), c.os(1), c.rs(1), c.count());
    });
    return op;
}

void registerInvert() {
    auto& r = registry();
    Op i3f = invertOp<float, 3>("invert_3x3_32f", "3x3 inverse 32f");
    vorxFixed<float, vorxInvert_ma_32f_3x3>(i3f);
    Op i4f = invertOp<float, 4>("invert_4x4_32f", "4x4 inverse 32f");
    vorxFixed<float, vorxInvert_ma_32f_4x4>(i4f);
    layouts(i4f);
    Op i6f = invertOp<float, 6>("invert_6x6_32f", "6x6 inverse 32f");
    vorxFixed<float, vorxInvert_ma_32f_6x6>(i6f);
    Op i3d = invertOp<double, 3>("invert_3x3_64f", "3x3 inverse 64f");
    vorxFixed<double, vorxInvert_ma_64f_3x3>(i3d);
    Op i4d = invertOp<double, 4>("invert_4x4_64f", "4x4 inverse 64f");
    vorxFixed<double, vorxInvert_ma_64f_4x4>(i4d);
    Op i6d = invertOp<double, 6>("invert_6x6_64f", "6x6 inverse 64f");
    vorxFixed<double, vorxInvert_ma_64f_6x6>(i6d);
    for (Op* op : {&i3f, &i4f, &i6f, &i3d, &i4d, &i6d}) r.push_back(std::move(*op));
    r.push_back(anySize());
}

const Registrar reg(registerInvert);
} // namespace
