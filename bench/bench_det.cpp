// Determinants of arrays of 3x3, 4x4 and 6x6 matrices in both types (Contiguous, the
// 4x4 32f also Strided and List), and the run-time size at 6x6 64f with its scratch
// buffer. vorx's fixed sizes are closed forms run on the x87 unit in both types: the
// 32f rows cannot take the packed paths of other families, their bits depend on it.
#include "harness.h"
#include "peers/det.h"

#include <vorx.h>

#include <cmath>

namespace {
using namespace vb;

constexpr std::uint64_t kSeed = 0xde7u;

// Every kernel stores the result of object k at d[k], whatever the layout of the sources.
template <class T> void adjacentResults(const Ctx& c, std::size_t k, long double* out) { *out = c.p<T>(1)[k]; }

// Long double elimination with partial pivoting of object k.
template <class T, int N> long double referenceDet(const Ctx& c, std::size_t k) {
    long double m[N][N], det = 1;
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j) m[i][j] = c.a[0].at<T>(k, i, j);
    for (int col = 0; col < N; ++col) {
        int best = col;
        for (int r = col + 1; r < N; ++r)
            if (std::fabs(m[r][col]) > std::fabs(m[best][col])) best = r;
        if (best != col) {
            for (int j = 0; j < N; ++j) std::swap(m[col][j], m[best][j]);
            det = -det;
        }
        det *= m[col][col];
        for (int r = col + 1; r < N; ++r) {
            long double f = m[r][col] / m[col][col];
            for (int j = col + 1; j < N; ++j) m[r][j] -= f * m[col][j];
        }
    }
    return det;
}

// Well-conditioned matrices (a permuted dominant diagonal), so that every peer's
// result is close to the reference in relative terms.
template <class T, int N> Op detOp(const char* id, const char* title) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, elemOf<T>(), N, N}, {Role::Out, elemOf<T>(), 1, 1}};
    op.tol = 8 * N;
    op.make = [](const Ctx& c, std::size_t k) { makePivoting(c, 0, k, kSeed); };
    op.reference = [](const Ctx& c, std::size_t k, long double* out) { *out = referenceDet<T, N>(c, k); };
    const Canon res = adjacentResults<T>;
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::det<T, N>(c.p<T>(0), c.p<T>(1), c.n); }, res)
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::det<T, N>(c.p<T>(0), c.p<T>(1), c.n); }, res)
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::det<T, N>(c.p<T>(0), c.p<T>(1), c.n); }, res)
      .kernel("LAPACK", Lay::C, [](const Ctx& c) { lapack_peer::det<T, N>(c.p<T>(0), c.p<T>(1), c.n); }, res);
    return op;
}

template <class T, int N, auto Fn> void vorxFixed(Op& op) {
    op.kernel("vorx", Lay::C, [](const Ctx& c) { Fn(c.p<T>(0), c.os(0), c.rs(0), c.p<T>(1), c.count()); },
              adjacentResults<T>);
}

// The 4x4 32f from Strided and List sources.
void layouts(Op& op) {
    const Canon res = adjacentResults<float>;
    op.kernel("vorx", Lay::S2, [](const Ctx& c) {
        vorxDet_ma_32f_4x4_S2(c.p<float>(0), c.os(0), c.rs(0), c.es(0), c.p<float>(1), c.count());
    }, res);
    op.kernel("plain -O2", Lay::S2, [](const Ctx& c) { plain_O2::detS<float, 4>(c.p<float>(0), c.p<float>(1), c.os(0), c.rs(0), c.es(0), c.n); }, res)
      .kernel("plain -O3", Lay::S2, [](const Ctx& c) { plain_O3::detS<float, 4>(c.p<float>(0), c.p<float>(1), c.os(0), c.rs(0), c.es(0), c.n); }, res)
      .kernel("Eigen", Lay::S2, [](const Ctx& c) { eigen_peer::detS<float, 4>(c.p<float>(0), c.p<float>(1), c.os(0), c.rs(0), c.es(0), c.n); }, res);
    op.kernel("vorx", Lay::L, [](const Ctx& c) {
        vorxDet_ma_32f_4x4_L(c.t<float>(0), 0, c.rs(0), c.p<float>(1), c.count());
    }, res);
    op.kernel("plain -O2", Lay::L, [](const Ctx& c) { plain_O2::detL<float, 4>(c.t<float>(0), c.p<float>(1), c.n); }, res)
      .kernel("plain -O3", Lay::L, [](const Ctx& c) { plain_O3::detL<float, 4>(c.t<float>(0), c.p<float>(1), c.n); }, res)
      .kernel("Eigen", Lay::L, [](const Ctx& c) { eigen_peer::detL<float, 4>(c.t<float>(0), c.p<float>(1), c.n); }, res);
}

// The run-time size at 6x6 64f, one scratch buffer for the whole call.
Op anySize() {
    Op op = detOp<double, 6>("det_any_6x6_64f", "6x6 det 64f, run-time size");
    op.operands.push_back({Role::Work, Elem::F64, 1, 6 * 6 + 6, true});
    op.kernel("vorx", Lay::C, [](const Ctx& c) {
        vorxDet_ma_64f(c.p<double>(0), c.os(0), c.rs(0), 6, c.p<double>(2), c.p<double>(1), c.count());
    }, adjacentResults<double>);
    return op;
}

void registerDet() {
    auto& r = registry();
    Op d3f = detOp<float, 3>("det_3x3_32f", "3x3 det 32f");
    vorxFixed<float, 3, vorxDet_ma_32f_3x3>(d3f);
    Op d4f = detOp<float, 4>("det_4x4_32f", "4x4 det 32f");
    vorxFixed<float, 4, vorxDet_ma_32f_4x4>(d4f);
    layouts(d4f);
    Op d6f = detOp<float, 6>("det_6x6_32f", "6x6 det 32f");
    vorxFixed<float, 6, vorxDet_ma_32f_6x6>(d6f);
    Op d3d = detOp<double, 3>("det_3x3_64f", "3x3 det 64f");
    vorxFixed<double, 3, vorxDet_ma_64f_3x3>(d3d);
    Op d4d = detOp<double, 4>("det_4x4_64f", "4x4 det 64f");
    vorxFixed<double, 4, vorxDet_ma_64f_4x4>(d4d);
    Op d6d = detOp<double, 6>("det_6x6_64f", "6x6 det 64f");
    vorxFixed<double, 6, vorxDet_ma_64f_6x6>(d6d);
    for (Op* op : {&d3f, &d4f, &d6f, &d3d, &d4d, &d6d}) r.push_back(std::move(*op));
    r.push_back(anySize());
}

const Registrar reg(registerDet);
} // namespace
