// Solving A x = b from the factors the decomposition leaves: forward substitution
// through the unit lower triangle, then back substitution through the upper one,
// all through perm, with dst as the only working vector. No threshold: a zero
// pivot gives infinities or NaNs by IEEE rules, and perm is trusted as it stands.
//
// Every row sum starts from zero, takes its terms in ascending column order in one
// accumulator and is subtracted from the right side once. 32f: each operation in
// SSE single precision. 64f: the sum stays in an x87 register for the whole row and
// only the store of x[i] rounds.
#pragma once

#include "decomp.h"

namespace vorx {
namespace lu {

template <class T>
struct Solve;

template <>
struct Solve<float> {
    using Acc = float;
    static Acc zero() { return 0.0f; }
    static Acc add(Acc s, float a, float x) { return sse::add(s, sse::mul(a, x)); }
    static void first(float* x, float b, Acc s) { *x = b - s; }
    static void last(float* x, float p) { *x = *x / p; }
    static void back(float* x, Acc s, float p) { *x = (*x - s) / p; }
};

template <>
struct Solve<double> {
    using Acc = long double;
    static Acc zero() { return 0.0L; }
    static Acc add(Acc s, double a, double x) { return s + wide(a) * wide(x); }
    static void first(double* x, double b, Acc s) { storeRounded(x, wide(b) - s); }
    static void last(double* x, double p) { storeRounded(x, wide(*x) / wide(p)); }
    static void back(double* x, Acc s, double p) { storeRounded(x, (wide(*x) - s) / wide(p)); }
};

// Solves one object: matrix a (an object of an array, or the one matrix), right
// side b, result x. A fixed order N makes every loop
// bound a constant; the loops open out as in the decomposition.
template <class T, int N, class M, class B, class X>
[[gnu::always_inline]] inline void substitute(const M& a, const uint32_t* perm, const B& b, const X& x, uint32_t sizeArg)
{
    using F = Solve<T>;
    const uint32_t size = N ? N : sizeArg;
    auto br = b.row(0);
    auto xr = x.row(0);
    copyBits(x.in(xr, 0), b.in(br, perm[0]));
#pragma GCC unroll 8
    for (uint32_t i = 1; i < size; ++i) {
        uint32_t r = perm[i];
        auto ar = a.row(r);
        typename F::Acc s = F::zero();
#pragma GCC unroll 8
        for (uint32_t j = 0; j < i; ++j) s = F::add(s, *a.in(ar, j), *x.in(xr, j));
        F::first(x.in(xr, i), *b.in(br, r), s);
    }
    uint32_t z = size - 1;
    F::last(x.in(xr, z), *a.in(a.row(perm[z]), z));
#pragma GCC unroll 8
    for (uint32_t t = 1; t < size; ++t) {
        uint32_t i = z - t;
        auto ar = a.row(perm[i]);
        typename F::Acc s = F::zero();
#pragma GCC unroll 8
        for (uint32_t j = i + 1; j < size; ++j) s = F::add(s, *a.in(ar, j), *x.in(xr, j));
        F::back(x.in(xr, i), s, *a.in(ar, i));
    }
}

// Table scan of the Pointer layouts: all matrix entries, then src2[k] and dst[k]
// for every element of the vectors.
template <class M, class B, class X>
bool tablesOk(const M& a, const B& b, const X& x, uint32_t size)
{
    if constexpr (IsElemTable<M>::value) {
        for (uint32_t k = 0; k < size * size; ++k)
            if (!a.entry(k)) return false;
        for (uint32_t k = 0; k < size; ++k)
            if (!b.entry(k) || !x.entry(k)) return false;
    }
    return true;
}

// The whole call; a single-vector form is the array form with one object and no
// count test.
template <class T, int N, class M, class B, class X>
[[gnu::always_inline]] inline vorxStatus solveCall(M a, const uint32_t* perm, B b, X x, uint32_t size, uint32_t count,
                     uint32_t permStep)
{
    if (anyNull(a, b, x) || !perm) return kNull;
    if (N == 0 && size == 0) return kBadSize;
    a = a.withShape(size, size);
    b = b.withShape(1, size);
    x = x.withShape(1, size);
    if (!lu::tablesOk(a, b, x, size)) return kNull;
    // List entries of the call's lists in argument order (the one matrix of the mva
    // forms is plain memory, not a list).
    auto object = [&](uint32_t n, const auto& a1, const auto& b1, const auto& x1)
                      __attribute__((always_inline)) {
        substitute<T, N>(a1, perm + n * permStep, b1, x1, size);
    };
    return eachObject(count, object, a.first(), b.first(), x.first());
}

template <class T, int N>
struct SolveOne {
    template <class M, class B, class X>
    static vorxStatus run(M a, const uint32_t* perm, B b, X x, uint32_t size)
    {
        return solveCall<T, N>(a, perm, b, x, size, 1, 0);
    }
};

// One perm for every right side (mva) or one slice per object (mava).
template <class T, int N, bool PermPerObject>
struct SolveArray {
    template <class M, class B, class X>
    static vorxStatus run(M a, const uint32_t* perm, B b, X x, uint32_t size, uint32_t count)
    {
        return solveCall<T, N>(a, perm, b, x, size, count, PermPerObject ? size : 0);
    }
};
template <class T, int N> using SolveShared = SolveArray<T, N, false>;
template <class T, int N> using SolveEach = SolveArray<T, N, true>;

// The 64f List forms of the one-matrix solve step the matrix columns by 4 bytes,
// not 8: element (r, j) is the double at src + r*srcRowStride + j*4, in the sums
// and the divisors alike, so only column 0 meets the element the decomposition
// wrote. A unit whose function has this behaviour derives its Body from here.
template <int N>
struct FourByteColumns {
    template <class B, class X>
    static vorxStatus run(Direct<const double> a, const uint32_t* perm, B b, X x, uint32_t size,
                          uint32_t count)
    {
        a.es = 4;
        return SolveShared<double, N>::run(a, perm, b, x, size, count);
    }
};

}  // namespace lu

namespace tag {
struct LUBackSubst_mv : lu::Family<lu::SolveOne> {};
struct LUBackSubst_mva : lu::Family<lu::SolveShared> {};
struct LUBackSubst_mava : lu::Family<lu::SolveEach> {};
}  // namespace tag

}  // namespace vorx
