// Cholesky decomposition A = L·Lᵀ of symmetric positive-definite matrices into the
// library's factor form: L strictly below the diagonal of dst and 1/L[i][i] on it,
// so that the back substitution only multiplies. Only the lower triangle of src
// (diagonal included) is read, and only that of dst is written.
//
// Row by row, top down: L[i][j] is src[i][j] minus the products dst[i][k]·dst[j][k]
// by ascending k, times the stored reciprocal dst[j][j]; then the pivot d, src[i][i]
// minus the squares by ascending k, must be greater than a literal zero (-179
// otherwise), and dst[i][i] = 1/√d. Row i's lower part is written before its pivot
// is tested: a failure at row i leaves rows 0..i-1 complete, dst[i][0..i-1] written
// and the rest as it was. Every source element is read before the destination
// element of the same place is written, and L is read back only where it is final,
// so dst may be src.
//
// Three functions per type do the work, the one-matrix ones of no fixed size in
// Contiguous, Strided and Pointer layout; every other name calls one of them
// (entry.h). Contiguous and Strided take closed forms at orders 3 to 6 and the row
// loop at any other order; Pointer takes the row loop at every order.
#pragma once

#include <type_traits>

#include "../frame/checks.h"
#include "../frame/sse.h"
#include "../frame/x87.h"
#include "entry.h"

namespace vorx {

constexpr vorxStatus kNotPositiveDefinite = vorxStatusNotPositiveDefinite;

namespace tag {
struct CholeskyDecomp_m;
struct CholeskyDecomp_ma;
}  // namespace tag

namespace chol {

// The closed forms need every step of the recurrence inlined into one straight line,
// the lambdas that carry the steps included (which only take the attribute this way).
#define VORX_CHOL_INLINE __attribute__((always_inline))

// Runs f(0) .. f(n-1) while f returns true. Open: the closed forms, whose n is a
// constant, lay the iterations out in a straight line.
template <bool Open, class F>
[[gnu::always_inline]] inline bool all(uint32_t n, F f)
{
    if constexpr (Open) {
#pragma GCC unroll 8
        for (uint32_t i = 0; i < n; ++i)
            if (!f(i)) return false;
    } else {
        for (uint32_t i = 0; i < n; ++i)
            if (!f(i)) return false;
    }
    return true;
}
template <bool Open, class F>
[[gnu::always_inline]] inline void each(uint32_t n, F f)
{
    all<Open>(n, [&](uint32_t i) VORX_CHOL_INLINE {
        f(i);
        return true;
    });
}

// One step of the recurrence on element type T. 32f: every product and every
// subtraction in SSE single precision. 64f: on the x87 unit, the running value at
// register width on double operands, rounded once by its store to dst.
template <class T>
struct Step;

template <>
struct Step<float> {
    using Acc = float;
    static Acc load(const float* e) { return *e; }
    static Acc minus(Acc t, Acc a, Acc b) { return t - sse::mul(a, b); }
    static Acc scaled(float* e, Acc t, Acc r) { return *e = sse::mul(t, r); }
};

// Stores x rounded to double and returns it as it was, at register width. The empty
// asm sends every later read of the element back to memory, to the rounded value.
inline long double storeRounded(double* e, long double x)
{
    *e = static_cast<double>(x);
    __asm__("" : "+m"(*e));
    return x;
}

template <>
struct Step<double> {
    using Acc = long double;
    static Acc load(const double* e) { return wide(*e); }
    static Acc minus(Acc t, Acc a, Acc b) { return t - a * b; }
    static Acc scaled(double* e, Acc t, Acc r) { return storeRounded(e, t * r); }
};

// 1/√d on the x87 unit: root and quotient at register width, one rounding when stored.
struct X87Root {
    static float store(float* e, float d) { return *e = roundToFloat(1.0L / __builtin_sqrtl(wide(d))); }
    static long double store(double* e, long double d) { return storeRounded(e, 1.0L / __builtin_sqrtl(d)); }
};
// The 32f Pointer bodies: the single-precision root, then a single-precision quotient.
struct SseRoot {
    static float store(float* e, float d) { return *e = 1.0f / __builtin_sqrtf(d); }
};

// Element (i, j) of one matrix: at byte offsets (the row loop), at a whole number of
// elements along the row (the closed forms: the element stride shifted down to
// elements once, so a remainder of bytes is lost and a negative one rounds down), or
// through its pointer table.
template <class T>
struct Bytes {
    T* x;
    int32_t rs, es;
    T* operator()(uint32_t i, uint32_t j) const { return byteAt(x, step(i, rs) + step(j, es)); }
};
template <class T>
struct Whole {
    T* x;
    int32_t rs, ei;
    explicit Whole(const Direct<T>& v) : x(v.x), rs(v.rs), ei(v.es >> (sizeof(T) == 4 ? 2 : 3)) {}
    T* operator()(uint32_t i, uint32_t j) const { return byteAt(x, step(i, rs)) + step(j, ei); }
};
template <class T>
struct Table {
    T* const* x;
    int32_t bs;
    uint32_t n;
    T* operator()(uint32_t i, uint32_t j) const { return byteAt(x[i * n + j], bs); }
};
template <class T>
Bytes<T> gridOf(const Direct<T>& v, uint32_t) { return {v.x, v.rs, v.es}; }
template <class T>
Table<T> gridOf(const ElemTable<T>& v, uint32_t n) { return {v.x, v.bs, n}; }

// The recurrence on one matrix of order n: N a closed form of that order, 0 the row
// loop. `lenient(i)` names the pivots whose test asks whether zero lies below d,
// which lets a NaN pass on as if positive; every other pivot must be greater than
// zero, which a NaN is not.
//
// The 64f closed forms carry the values just computed on at register width: the
// elements of the current row of L and the newest reciprocal, where the row loop
// reads them back as stored doubles (older values are read back so by both). That
// takes two store-and-reload trips off the path from one pivot to the next, and may
// change the last bits of a result against the loop's.
template <class T, int N, class Root, class S, class D, class Lenient>
[[gnu::always_inline]] inline vorxStatus factor(const S& src, const D& dst, uint32_t n, Lenient lenient)
{
    using A = Step<T>;
    using Acc = typename A::Acc;
    constexpr bool open = N != 0, carry = open && sizeof(T) == 8;
    [[maybe_unused]] Acc row[carry ? N : 1];
    Acc recip = 0;
    auto stored = [&](uint32_t r, uint32_t c) VORX_CHOL_INLINE { return A::load(dst(r, c)); };
    auto mine = [&](uint32_t i, uint32_t k) VORX_CHOL_INLINE -> Acc {
        if constexpr (carry) return row[k];
        else return stored(i, k);
    };
    bool ok = all<open>(n, [&](uint32_t i) VORX_CHOL_INLINE {
        each<open>(i, [&](uint32_t j) VORX_CHOL_INLINE {
            Acc t = A::load(src(i, j));
            each<open>(j, [&](uint32_t k) VORX_CHOL_INLINE { t = A::minus(t, mine(i, k), stored(j, k)); });
            Acc v = A::scaled(dst(i, j), t, carry && j + 1 == i ? recip : stored(j, j));
            if constexpr (carry) row[j] = v;
        });
        Acc d = A::load(src(i, i));
        each<open>(i, [&](uint32_t k) VORX_CHOL_INLINE {
            Acc x = mine(i, k);
            d = A::minus(d, x, x);
        });
        if (lenient(i) ? d <= 0 : !(d > 0)) return false;
        recip = Root::store(dst(i, i), d);
        return true;
    });
    return ok ? kOk : kNotPositiveDefinite;
}

struct Strict {
    bool operator()(uint32_t) const { return false; }
};

// The 64f closed forms test some pivots the lenient way: the first at every order,
// the last at order 4, and the last at order 3 in Contiguous layout only. Kept as
// they are; everything else in the family rejects a NaN pivot.
template <class T, int N, Lay L>
struct LenientPivots {
    bool operator()(uint32_t i) const
    {
        return sizeof(T) == 8 && (i == 0 || (i == N - 1 && (N == 4 || (N == 3 && L == Lay::C))));
    }
};

// The closed form of order N.
template <class T, int N, Lay L>
[[gnu::always_inline]] inline vorxStatus closed(const Direct<const T>& s, const Direct<T>& d)
{
    return factor<T, N, X87Root>(Whole<const T>(s), Whole<T>(d), N, LenientPivots<T, N, L>{});
}

// The three working bodies: one matrix of any order.
template <class T, Lay L>
struct DecompOne {
    [[gnu::always_inline]] static vorxStatus run(Direct<const T> s, Direct<T> d, uint32_t n)
    {
        if (anyNull(s, d)) return kNull;
        if (n == 0) return kBadSize;
        switch (n) {
        case 3: return closed<T, 3, L>(s, d);
        case 4: return closed<T, 4, L>(s, d);
        case 5: return closed<T, 5, L>(s, d);
        case 6: return closed<T, 6, L>(s, d);
        default:
            return factor<T, 0, X87Root>(gridOf(s, n), gridOf(d, n), n, Strict{});
        }
    }
    [[gnu::always_inline]] static vorxStatus run(ElemTable<const T> s, ElemTable<T> d, uint32_t n)
    {
        if (anyNull(s, d)) return kNull;
        if (n == 0) return kBadSize;
        using Root = std::conditional_t<sizeof(T) == 4, SseRoot, X87Root>;
        return factor<T, 0, Root>(gridOf(s, n), gridOf(d, n), n, Strict{});
    }
};

// Every array form: the checks, then object by object through the one-matrix
// function of its layout, stopping at the first object that does not return 0. No
// table or list entry is examined here; each object's call tests its own addresses.
// count is signed in Contiguous, Strided and List layouts (negative: nothing done)
// and unsigned in the Pointer layouts.
template <class T, Lay L>
struct DecompArray {
    template <class S, class D>
    static vorxStatus run(S s, D d, uint32_t n, uint32_t count)
    {
        if (anyNull(s, d)) return kNull;
        if (n == 0 || count == 0) return kBadSize;
        if (L != Lay::P && L != Lay::PS2 && static_cast<int32_t>(count) < 0) return kOk;
        constexpr Lay O = objectLayout(L);
        for (uint32_t k = 0; k < count; ++k) {
            vorxStatus st = callWith(Entry<tag::CholeskyDecomp_m, T, O>::fn,
                                     std::tuple_cat(argsOf<K::m, O>(objectOf(s, k)), argsOf<K::m, O>(objectOf(d, k))), n);
            if (st != kOk) return st;
        }
        return kOk;
    }
};

// A fixed-size name passes its order on to the name without one.
template <class Tag, K Kind, class T, int N, Lay L>
struct DecompForward {
    template <class S, class D, class... Count>
    static vorxStatus run(S s, D d, uint32_t, Count... count)
    {
        return callWith(Entry<Tag, T, L>::fn, std::tuple_cat(argsOf<Kind, L>(s), argsOf<Kind, L>(d)), uint32_t(N),
                        count...);
    }
};

template <class Tag, K Kind, template <class, Lay> class Work>
struct DecompFamily {
    template <class T, int N, Lay L>
    struct Impl : std::conditional_t<N == 0, Work<T, L>, DecompForward<Tag, Kind, T, N, L>> {};
};

}  // namespace chol

namespace tag {
struct CholeskyDecomp_m : chol::DecompFamily<CholeskyDecomp_m, K::m, chol::DecompOne> {};
struct CholeskyDecomp_ma : chol::DecompFamily<CholeskyDecomp_ma, K::ma, chol::DecompArray> {};
}  // namespace tag

}  // namespace vorx

#define VORX_CHOL_DECOMP_M(X)                                              \
    VORX_CHOL_THREE(X, CholeskyDecomp_m, float, vorxCholeskyDecomp_m_32f)  \
    VORX_CHOL_THREE(X, CholeskyDecomp_m, double, vorxCholeskyDecomp_m_64f)
#define VORX_CHOL_DECOMP_MA(X)                                              \
    VORX_CHOL_SIX(X, CholeskyDecomp_ma, float, vorxCholeskyDecomp_ma_32f)   \
    VORX_CHOL_SIX(X, CholeskyDecomp_ma, double, vorxCholeskyDecomp_ma_64f)
VORX_CHOL_DECOMP_M(VORX_CHOL_ENTRY)
VORX_CHOL_DECOMP_MA(VORX_CHOL_ENTRY)
