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
    static Acc add(Acc s, float a, float x) { return s + a * x; }
    static float first(float b, Acc s) { return b - s; }
    static float last(float x, float p) { return x / p; }
    static float back(float x, Acc s, float p) { return (x - s) / p; }
};

template <>
struct Solve<double> {
    using Acc = long double;
    static Acc zero() { return 0.0L; }
    static Acc add(Acc s, double a, double x) { return s + wide(a) * wide(x); }
    static double first(double b, Acc s) { return roundToDouble(wide(b) - s); }
    static double last(double x, double p) { return roundToDouble(wide(x) / wide(p)); }
    static double back(double x, Acc s, double p) { return roundToDouble((wide(x) - s) / wide(p)); }
};

// Solves object n: matrix a (object n of an array, or the one matrix whose view
// has no object term), right side b, result x.
template <class T, class M, class B, class X>
void substitute(const M& a, const uint32_t* perm, const B& b, const X& x, uint32_t n, uint32_t size)
{
    using F = Solve<T>;
    copyBits(x.at(n, 0, 0), b.at(n, 0, perm[0]));
    for (uint32_t i = 1; i < size; ++i) {
        uint32_t r = perm[i];
        typename F::Acc s = F::zero();
        for (uint32_t j = 0; j < i; ++j) s = F::add(s, *a.at(n, r, j), *x.at(n, 0, j));
        *x.at(n, 0, i) = F::first(*b.at(n, 0, r), s);
    }
    uint32_t z = size - 1;
    *x.at(n, 0, z) = F::last(*x.at(n, 0, z), *a.at(n, perm[z], z));
    for (uint32_t i = z; i-- > 0;) {
        uint32_t r = perm[i];
        typename F::Acc s = F::zero();
        for (uint32_t j = i + 1; j < size; ++j) s = F::add(s, *a.at(n, r, j), *x.at(n, 0, j));
        *x.at(n, 0, i) = F::back(*x.at(n, 0, i), s, *a.at(n, r, i));
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
template <class T, int N, bool Array, class M, class B, class X>
vorxStatus solveCall(M a, const uint32_t* perm, B b, X x, uint32_t size, uint32_t count,
                     uint32_t permStep)
{
    if (anyNull(a, b, x) || !perm) return kNull;
    if (N == 0 && size == 0) return kBadSize;
    a = a.withShape(size, size);
    b = b.withShape(1, size);
    x = x.withShape(1, size);
    if (!lu::tablesOk(a, b, x, size)) return kNull;
    for (uint32_t n = 0; n < count; ++n) {
        // List entries of the call's lists in argument order (the one matrix of
        // the mva forms is plain memory, not a list).
        if (!listsOk(n, a, b, x)) return kNull;
        substitute<T>(a, perm + n * permStep, b, x, n, size);
    }
    return kOk;
}

template <class T, int N>
struct SolveOne {
    template <class M, class B, class X>
    static vorxStatus run(M a, const uint32_t* perm, B b, X x, uint32_t size)
    {
        return solveCall<T, N, false>(a, perm, b, x, size, 1, 0);
    }
};

// One perm for every right side (mva) or one slice per object (mava).
template <class T, int N, bool PermPerObject>
struct SolveArray {
    template <class M, class B, class X>
    static vorxStatus run(M a, const uint32_t* perm, B b, X x, uint32_t size, uint32_t count)
    {
        return solveCall<T, N, true>(a, perm, b, x, size, count, PermPerObject ? size : 0);
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
