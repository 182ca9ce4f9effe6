// Cholesky back substitution: A·x = b from the factor form the decomposition leaves
// (L strictly below the diagonal, 1/L[i][i] on it), first L·y = b, then Lᵀ·x = y,
// with dst as the only working vector. No division and no element is tested: a zero
// or non-finite element of the factor flows through the arithmetic.
//
// Forward, i ascending: t = b[i], minus src1[i][k]·x[k] by ascending k, and x[i] =
// t·src1[i][i]. Backward, i descending: t = x[i], minus src1[k][i]·x[k] from the
// last row k down to i+1 (column i of the triangle, row i of Lᵀ), and x[i] =
// t·src1[i][i]. One order at every size and in every layout; 64f rounds each x[i]
// as it is stored and reads it back from there. b[i] is read just before x[i] is
// written and never again, so dst may be src2.
//
// Three functions per type do the work (one vector, Contiguous, Strided, Pointer);
// the fixed sizes and the array forms call them (entry.h). Sizes and counts are
// signed throughout the family: a negative one does nothing and returns 0.
#pragma once

#include "decomp.h"

namespace vorx {

namespace tag {
struct CholeskyBackSubst_mv;
struct CholeskyBackSubst_mva;
struct CholeskyBackSubst_mava;
}  // namespace tag

namespace chol {

template <class T, Lay L>
struct SolveOne {
    template <class M, class V, class X>
    static vorxStatus run(M ma, V vb, X vx, uint32_t size)
    {
        if (anyNull(ma, vb, vx)) return kNull;
        if (size == 0) return kBadSize;
        using A = Step<T>;
        // The sweeps count in a signed int: a size above 2^31 - 1 reads negative,
        // both sweeps are empty and the call succeeds without touching anything.
        const int32_t n = static_cast<int32_t>(size);
        if (n < 0) return kOk;
        const auto a = gridOf(ma, size);
        const auto b = gridOf(vb, size);
        const auto x = gridOf(vx, size);
        for (int32_t i = 0; i < n; ++i) {
            typename A::Acc t = A::load(b(0, i));
            for (int32_t k = 0; k < i; ++k) t = A::minus(t, *a(i, k), *x(0, k));
            A::scaled(x(0, i), t, *a(i, i));
        }
        for (int32_t i = n - 1; i >= 0; --i) {
            typename A::Acc t = A::load(x(0, i));
            for (int32_t k = n - 1; k > i; --k) t = A::minus(t, *a(k, i), *x(0, k));
            A::scaled(x(0, i), t, *a(i, i));
        }
        return kOk;
    }
};

// Every array form: the checks, then object by object through the one-vector
// function of its layout. Each object's status is dropped: an object whose list
// entry sums with its shift to zero is left as it was and the loop goes on. The one
// matrix of an mva form has no object term and is the same for every object.
template <class T, Lay L>
struct SolveArray {
    template <class M, class V, class X>
    static vorxStatus run(M a, V b, X x, uint32_t n, uint32_t count)
    {
        if (anyNull(a, b, x)) return kNull;
        if (n == 0 || count == 0) return kBadSize;
        constexpr Lay O = objectLayout(L);
        for (int32_t k = 0; k < static_cast<int32_t>(count); ++k) {
            uint32_t u = static_cast<uint32_t>(k);
            callWith(Entry<tag::CholeskyBackSubst_mv, T, O>::fn,
                     std::tuple_cat(argsOf<K::m, O>(objectOf(a, u)), argsOf<K::v, O>(objectOf(b, u)),
                                    argsOf<K::v, O>(objectOf(x, u))),
                     n);
        }
        return kOk;
    }
};

template <class Tag, K Matrix, K Vector, class T, int N, Lay L>
struct SolveForward {
    template <class M, class V, class X, class... Count>
    static vorxStatus run(M a, V b, X x, uint32_t, Count... count)
    {
        return callWith(Entry<Tag, T, L>::fn,
                        std::tuple_cat(argsOf<Matrix, L>(a), argsOf<Vector, L>(b), argsOf<Vector, L>(x)),
                        uint32_t(N), count...);
    }
};

template <class Tag, K Matrix, K Vector, template <class, Lay> class Work>
struct SolveFamily {
    template <class T, int N, Lay L>
    struct Impl : std::conditional_t<N == 0, Work<T, L>, SolveForward<Tag, Matrix, Vector, T, N, L>> {};
};

}  // namespace chol

namespace tag {
struct CholeskyBackSubst_mv : chol::SolveFamily<CholeskyBackSubst_mv, K::m, K::v, chol::SolveOne> {};
struct CholeskyBackSubst_mva : chol::SolveFamily<CholeskyBackSubst_mva, K::m, K::va, chol::SolveArray> {};
struct CholeskyBackSubst_mava : chol::SolveFamily<CholeskyBackSubst_mava, K::ma, K::va, chol::SolveArray> {};
}  // namespace tag

}  // namespace vorx

#define VORX_CHOL_BACKSUBST_MV(X)                                                   \
    VORX_CHOL_THREE(X, CholeskyBackSubst_mv, float, vorxCholeskyBackSubst_mv_32f)   \
    VORX_CHOL_THREE(X, CholeskyBackSubst_mv, double, vorxCholeskyBackSubst_mv_64f)
#define VORX_CHOL_BACKSUBST_MVA(X)                                                  \
    VORX_CHOL_SIX(X, CholeskyBackSubst_mva, float, vorxCholeskyBackSubst_mva_32f)   \
    VORX_CHOL_SIX(X, CholeskyBackSubst_mva, double, vorxCholeskyBackSubst_mva_64f)
#define VORX_CHOL_BACKSUBST_MAVA(X)                                                 \
    VORX_CHOL_SIX(X, CholeskyBackSubst_mava, float, vorxCholeskyBackSubst_mava_32f) \
    VORX_CHOL_SIX(X, CholeskyBackSubst_mava, double, vorxCholeskyBackSubst_mava_64f)
VORX_CHOL_BACKSUBST_MV(VORX_CHOL_ENTRY)
VORX_CHOL_BACKSUBST_MVA(VORX_CHOL_ENTRY)
VORX_CHOL_BACKSUBST_MAVA(VORX_CHOL_ENTRY)
