// LU factorisation with partial pivoting, and a full 6x6 64f solve. Every kernel's
// factor is compared in logical row order (vorx leaves the rows where they are and
// gives their order in perm; the peers exchange rows). The vorx rows appear once the
// library exports the family.
#include "harness.h"
#include "peers/peers.h"

#include <vorx.h>

#include <cmath>

namespace {
using namespace vb;

// Long double elimination of object k of operand 0, rows exchanged: lu gets the factors
// in logical order, p the original row of each.
template <class T, int N> void referenceLU(const Ctx& c, std::size_t k, long double* lu, int* p) {
    for (int i = 0; i < N; ++i) {
        p[i] = i;
        for (int j = 0; j < N; ++j) lu[i * N + j] = c.a[0].at<T>(k, i, j);
    }
    for (int col = 0; col < N - 1; ++col) {
        int best = col;
        for (int r = col + 1; r < N; ++r)
            if (std::fabs(lu[r * N + col]) > std::fabs(lu[best * N + col])) best = r;
        for (int j = 0; j < N; ++j) std::swap(lu[col * N + j], lu[best * N + j]);
        std::swap(p[col], p[best]);
        for (int r = col + 1; r < N; ++r) {
            long double f = lu[r * N + col] /= lu[col * N + col];
            for (int j = col + 1; j < N; ++j) lu[r * N + j] -= f * lu[col * N + j];
        }
    }
}

constexpr std::uint64_t kSeed = 0x5eed1u;

// vorx tests the last pivot of every object after the first at a displaced place,
// which in packed arrays lies in the factor area of a later object: that area must
// hold numbers, not the NaN that would make the call stop with -10.
constexpr long double kFactorFill = 1;

// vorx keeps the rows in place: logical row i is physical row perm[i].
template <class T, int N> void vorxCanon(const Ctx& c, std::size_t k, long double* out) {
    for (int i = 0; i < N; ++i) {
        int r = static_cast<int>(c.a[1].at<std::uint32_t>(k, 0, i));
        for (int j = 0; j < N; ++j) out[i * N + j] = r < N ? c.a[2].at<T>(k, r, j) : NAN;
    }
}

// The vorx kernel of a row, or nothing while the library does not export the family.
#ifdef VORX_HAVE_LU
#define VORX_LU(kernel) kernel
#else
#define VORX_LU(kernel) nullptr
#endif

template <class T, int N> Op luDecomp(const char* id, const char* title, Run vorx) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, elemOf<T>(), N, N}, {Role::Work, Elem::U32, 1, N},
                   {Role::Out, elemOf<T>(), N, N}};
    op.tol = 8 * N;
    op.make = [](const Ctx& c, std::size_t k) { makePivoting(c, 0, k, kSeed); };
    op.outputFill = kFactorFill;
    op.reference = [](const Ctx& c, std::size_t k, long double* out) {
        int p[N];
        referenceLU<T, N>(c, k, out, p);
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::luDecomp<T, N>(c.p<T>(0), c.p<std::uint32_t>(1), c.p<T>(2), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::luDecomp<T, N>(c.p<T>(0), c.p<std::uint32_t>(1), c.p<T>(2), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::luDecomp<T, N>(c.p<T>(0), c.p<std::uint32_t>(1), c.p<T>(2), c.n); })
      .kernel("LAPACK", Lay::C, [](const Ctx& c) { lapack_peer::luDecomp<T, N>(c.p<T>(0), c.p<std::uint32_t>(1), c.p<T>(2), c.n); });
    if (vorx) op.kernel("vorx", Lay::C, std::move(vorx), vorxCanon<T, N>);
    return op;
}

template <class T>
using Decomp = vorxStatus (*)(const T*, int32_t, int32_t, uint32_t*, T*, int32_t, int32_t, uint32_t);
template <class T, Decomp<T> Fn> void vorxDecomp(const Ctx& c) {
    Fn(c.p<T>(0), c.os(0), c.rs(0), c.p<std::uint32_t>(1), c.p<T>(2), c.os(2), c.rs(2), c.count());
}

// Solve a x = b: operands a, b, x, then the factor and perm that vorx works through.
Op luSolve6() {
    constexpr int N = 6;
    Op op;
    op.id = "lu_solve_6x6_64f";
    op.title = "6x6 LU solve 64f";
    op.operands = {{Role::In, Elem::F64, N, N}, {Role::In, Elem::F64, 1, N}, {Role::Out, Elem::F64, 1, N},
                   {Role::Work, Elem::F64, N, N}, {Role::Work, Elem::U32, 1, N}};
    op.tol = 16 * N;
    op.outputFill = kFactorFill;
    op.make = [](const Ctx& c, std::size_t k) {
        makePivoting(c, 0, k, kSeed);
        std::uint64_t s = kSeed + k;
        for (int j = 0; j < N; ++j) c.a[1].set(Elem::F64, k, 0, j, uniform(s));
    };
    op.reference = [](const Ctx& c, std::size_t k, long double* x) {
        long double lu[N * N];
        int p[N];
        referenceLU<double, N>(c, k, lu, p);
        for (int i = 0; i < N; ++i) {
            long double s = c.a[1].at<double>(k, 0, p[i]);
            for (int j = 0; j < i; ++j) s -= lu[i * N + j] * x[j];
            x[i] = s;
        }
        for (int i = N - 1; i >= 0; --i) {
            for (int j = i + 1; j < N; ++j) x[i] -= lu[i * N + j] * x[j];
            x[i] /= lu[i * N + i];
        }
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::luSolve<double, N>(c.p<double>(0), c.p<double>(1), c.p<double>(2), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::luSolve<double, N>(c.p<double>(0), c.p<double>(1), c.p<double>(2), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::luSolve<double, N>(c.p<double>(0), c.p<double>(1), c.p<double>(2), c.n); })
      .kernel("LAPACK", Lay::C, [](const Ctx& c) { lapack_peer::luSolve<double, N>(c.p<double>(0), c.p<double>(1), c.p<double>(2), c.n); });
#ifdef VORX_HAVE_LU
    op.kernel("vorx", Lay::C, [](const Ctx& c) {
        vorxLUDecomp_ma_64f_6x6(c.p<double>(0), c.os(0), c.rs(0), c.p<std::uint32_t>(4), c.p<double>(3), c.os(3),
                                c.rs(3), c.count());
        vorxLUBackSubst_mava_64f_6x6(c.p<double>(3), c.os(3), c.rs(3), c.p<std::uint32_t>(4), c.p<double>(1),
                                     c.os(1), c.p<double>(2), c.os(2), c.count());
    });
#endif
    return op;
}

void registerLU() {
    auto& r = registry();
    r.push_back(luDecomp<float, 4>("lu_4x4_32f", "4x4 LU 32f",
                          VORX_LU((vorxDecomp<float, vorxLUDecomp_ma_32f_4x4>))));
    r.push_back(luDecomp<float, 6>("lu_6x6_32f", "6x6 LU 32f",
                          VORX_LU((vorxDecomp<float, vorxLUDecomp_ma_32f_6x6>))));
    r.push_back(luDecomp<double, 4>("lu_4x4_64f", "4x4 LU 64f",
                          VORX_LU((vorxDecomp<double, vorxLUDecomp_ma_64f_4x4>))));
    r.push_back(luDecomp<double, 6>("lu_6x6_64f", "6x6 LU 64f",
                          VORX_LU((vorxDecomp<double, vorxLUDecomp_ma_64f_6x6>))));
    r.push_back(luSolve6());
}

const Registrar reg(registerLU);
} // namespace
