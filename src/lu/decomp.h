// LU decomposition with partial pivoting, one object or an array of them, for both
// element types and every layout. The source is copied into dst and eliminated
// there; rows never move, the exchanges live only in perm.
//
// One set of loops serves every member: a fixed size is the run-time loop with the
// order as a constant. 32f: every operation in SSE single precision. 64f: on the
// x87 unit, each quotient and each product-sum rounded once, by its store to dst.
#pragma once

#include "../frame/checks.h"
#include "../frame/elements.h"
#include "../frame/pairs.h"
#include "../frame/sse.h"
#include "../frame/x87.h"

namespace vorx {
namespace lu {

// The singularity threshold 2^-23, held as a double and shared by both element
// types: a 64f pivot below about 1.19e-07 is reported as singular too.
constexpr double kThreshold = 0x1p-23;

// Exact magnitude in the wide format: comparisons of 32f values made there give
// the exact comparison of the stored values. A NaN never compares true.
inline long double mag(float x) { return __builtin_fabsl(wide(x)); }
inline long double mag(double x) { return __builtin_fabsl(wide(x)); }
template <class T>
inline bool passes(T p) { return mag(p) >= kThreshold; }

// One elimination step on element type T: `scale` turns dst[r][k] into the
// multiplier m = dst[r][k] / p (a true division, stored) and returns the negated
// multiplier q; `update` is dst[r][j] = u * q + dst[r][j], multiply then add.
template <class T, bool WideQ>
struct Arith;

template <bool WideQ>
struct Arith<float, WideQ> {
    using Q = float;
    static Q scale(float* e, float p)
    {
        float m = *e / p;
        *e = m;
        return 0.0f - m;
    }
    static void update(float* e, const float* u, Q q) { *e = sse::add(sse::mul(*u, q), *e); }
};

// 64f: the fixed sizes keep q at register width; the run-time sizes take it from
// the multiplier as stored, rounded to double.
template <bool WideQ>
struct Arith<double, WideQ> {
    using Q = long double;
    static Q scale(double* e, double p)
    {
        long double m = wide(*e) / wide(p);
        storeRounded(e, m);
        return WideQ ? -m : -wide(*e);
    }
    static void update(double* e, const double* u, Q q) { storeRounded(e, wide(*u) * q + wide(*e)); }
};

// The rows of dst in perm order. A fixed order keeps their addresses in an array
// that is exchanged along with perm; the run-time sizes find them through perm.
template <class R, int N>
struct PermRows {
    typename R::Row r[N];
    explicit PermRows(const R& d)
    {
        r[0] = d.row(0);
        for (uint32_t i = 1; i < N; ++i) r[i] = d.down(r[i - 1]);
    }
    typename R::Row operator()(const uint32_t*, uint32_t i) const { return r[i]; }
    void exchange(uint32_t a, uint32_t k)
    {
        auto t = r[a];
        r[a] = r[k];
        r[k] = t;
    }
};
template <class R>
struct PermRows<R, 0> {
    const R& d;
    explicit PermRows(const R& rows) : d(rows) {}
    typename R::Row operator()(const uint32_t* perm, uint32_t i) const { return d.row(perm[i]); }
    void exchange(uint32_t, uint32_t) {}
};

// The location the last-pivot test reads for object n, with l = perm[size-1].
// Object 0 (and every single-matrix call) meets element (l, size-1) itself; object
// n >= 1 of an array meets a location displaced by n*size elements along the row
// (n rows down the table in the Pointer layouts, where the index may pass the end
// of the table and the pointer found there is followed). Kept as it stands.
template <class T>
inline T* lastPivotAt(const Obj<T>& d, uint32_t n, uint32_t l, uint32_t size)
{
    return byteAt(d.at(l, size - 1), step(n * size, d.es));
}
template <class T>
inline T* lastPivotAt(const TableObj<T>& d, uint32_t n, uint32_t l, uint32_t size)
{
    return d.in((l + n) * size, size - 1);
}

// Factorises object n: s, d are object n of src and dst, `perm` the object's slice.
// On a pivot failure at step k, dst holds steps 0..k-1 and perm the exchange of k.
// A fixed order N makes every loop bound a constant, and the unrolling pragmas let
// those loops open out completely (every element at a constant offset from its
// row); the run-time sizes get the same loops unrolled by 8.
template <class T, int N, class S, class D>
[[gnu::always_inline]] inline vorxStatus factorise(const S& s, uint32_t* perm, const D& d, uint32_t n, uint32_t sizeArg)
{
    using A = Arith<T, N != 0>;
    const uint32_t size = N ? N : sizeArg;
    auto sr = s.row(0);
    auto dr = d.row(0);
#pragma GCC unroll 8
    for (uint32_t i = 0; i < size; ++i) {
#pragma GCC unroll 8
        for (uint32_t j = 0; j < size; ++j) copyBits(d.in(dr, j), s.in(sr, j));
        if (i + 1 < size) {
            sr = s.down(sr);
            dr = d.down(dr);
        }
    }
#pragma GCC unroll 8
    for (uint32_t i = 0; i < size; ++i) perm[i] = i;
    PermRows<D, N> at(d);
#pragma GCC unroll 8
    for (uint32_t k = 0; k + 1 < size; ++k) {
        // Strictly greater wins: the first of equal maxima, never a NaN.
        long double best = mag(*d.in(at(perm, k), k));
        uint32_t arg = k;
#pragma GCC unroll 8
        for (uint32_t i = k + 1; i < size; ++i) {
            long double c = mag(*d.in(at(perm, i), k));
            if (c > best) {
                best = c;
                arg = i;
            }
        }
        uint32_t t = perm[arg];
        perm[arg] = perm[k];
        perm[k] = t;
        at.exchange(arg, k);
        auto pr = at(perm, k);
        T p = *d.in(pr, k);
        if (!passes(p)) return kZeroDivide;
#pragma GCC unroll 8
        for (uint32_t i = k + 1; i < size; ++i) {
            auto r = at(perm, i);
            auto q = A::scale(d.in(r, k), p);
#pragma GCC unroll 8
            for (uint32_t j = k + 1; j < size; ++j) A::update(d.in(r, j), d.in(pr, j), q);
        }
    }
    if (!passes(*lastPivotAt(d, n, perm[size - 1], size))) return kZeroDivide;
    return kOk;
}

template <class T, int N>
struct DecompArray {
    template <class S, class D>
    static vorxStatus run(S s, uint32_t* perm, D d, uint32_t size, uint32_t count)
    {
        if (anyNull(s, d) || !perm) return kNull;
        if (N == 0 && size == 0) return kBadSize;
        s = s.withShape(size, size);
        d = d.withShape(size, size);
        if (!pairsOk(s, d, size * size)) return kNull;
        auto object = [&](uint32_t n, const auto& s1, const auto& d1) {
            return factorise<T, N>(s1, perm + n * size, d1, n, size);
        };
        return eachObject(count, object, s.first(), d.first());
    }
};

// A single matrix is the array call with one object: no count, no lists, and its
// last pivot read where it lies.
template <class T, int N>
struct DecompOne {
    template <class S, class D>
    static vorxStatus run(S s, uint32_t* perm, D d, uint32_t size)
    {
        return DecompArray<T, N>::run(s, perm, d, size, 1);
    }
};

template <template <class, int> class Run>
struct Family {
    template <class T, int N, Lay L>
    struct Impl : Run<T, N> {};
};

}  // namespace lu

namespace tag {
struct LUDecomp_m : lu::Family<lu::DecompOne> {};
struct LUDecomp_ma : lu::Family<lu::DecompArray> {};
}  // namespace tag

}  // namespace vorx
