// QR decomposition by Householder reflections, one matrix or an array of them, of
// `height` rows and `width` columns (square or tall), for both element types and
// every layout. The source is copied into dst and reduced there; the caller's
// scratch of `height` elements holds the vector of the step at hand and serves
// every object of an array in turn.
//
// One set of loops serves every member: a fixed size is the run-time loop with the
// order as a constant, no closed form.
#pragma once

#include "packed.h"

namespace vorx {
namespace qr {

// Object by object: copy, then one reflection per step k, each sum ascending.
// Fails at the first column that cannot be reflected, with reflectors 0 to k-1
// applied and stored. A width above the height fails at step `height`, whose sum
// is empty, after the earlier steps have changed dst.
template <class T, int N, class S, class D>
inline vorxStatus factorise(const S& src, T* scratch, const D& dst, uint32_t widthArg, uint32_t heightArg)
{
    using A = Arith<T>;
    using W = typename A::W;
    const uint32_t width = N ? N : widthArg, height = N ? N : heightArg;
#pragma GCC unroll 8
    for (uint32_t i = 0; i < height; ++i)
#pragma GCC unroll 8
        for (uint32_t j = 0; j < width; ++j) copyBits(dst.at(i, j), src.at(i, j));
    const uint32_t steps = reflectors(width, height);
#pragma GCC unroll 8
    for (uint32_t k = 0; k < steps; ++k) {
        W sum = 0;
#pragma GCC unroll 8
        for (uint32_t i = k; i < height; ++i) {
            W x = A::load(dst.at(i, k));
            sum = A::add(sum, A::mul(x, x));
        }
        if (!A::passes(sum)) return kZeroDivide;
        // c = a + norm or a - norm by the sign of a, so that it never cancels.
        W norm = A::root(sum);
        W a = A::load(dst.at(k, k));
        W r = W(1) / A::away(a, norm);
        // v = (1, dst[k+1..][k] r); w = v'v from the products as formed (in 64f
        // before their rounding into scratch).
        Kept<T, N> kept;
        T* v = kept.at(scratch);
        scratch[k] = T(1);
        W w = 1;
#pragma GCC unroll 8
        for (uint32_t i = k + 1; i < height; ++i) {
            W p = A::mul(A::load(dst.at(i, k)), r);
            A::store(&scratch[i], p);
            if constexpr (N != 0) v[i] = scratch[i];
            w = A::add(w, A::mul(p, p));
        }
        W beta = W(-2) / w;
        // Columns k and on, column k included: its elements below the diagonal are
        // replaced by the tail next.
#pragma GCC unroll 8
        for (uint32_t j = k; j < width; ++j) {
            W t = A::load(dst.at(k, j));
#pragma GCC unroll 8
            for (uint32_t i = k + 1; i < height; ++i) t = A::add(t, A::mul(A::load(dst.at(i, j)), A::load(&v[i])));
            t = A::mul(t, beta);
            A::store(dst.at(k, j), A::add(A::load(dst.at(k, j)), A::mul(W(1), t)));
#pragma GCC unroll 8
            for (uint32_t i = k + 1; i < height; ++i)
                A::store(dst.at(i, j), A::add(A::load(dst.at(i, j)), A::mul(A::load(&v[i]), t)));
        }
#pragma GCC unroll 8
        for (uint32_t i = k + 1; i < height; ++i) copyBits(dst.at(i, k), &v[i]);
    }
    return kOk;
}

// Table scan of the Pointer layouts: all entries of src and dst, index by index,
// without any object's shift, before anything is copied and before the count test.
template <class S, class D>
bool tablesOk(const S& s, const D& d, uint32_t entries)
{
    if constexpr (IsElemTable<S>::value)
        for (uint32_t n = 0; n < entries; ++n)
            if (!s.entry(n) || !d.entry(n)) return false;
    return true;
}

template <class T, int N, bool Adjacent>
struct DecompArray {
    template <class S, class D>
    [[gnu::flatten]] static vorxStatus run(S s, T* scratch, D d, uint32_t width, uint32_t height, uint32_t count)
    {
        if (anyNull(s, d) || !scratch) return kNull;
        if (N == 0 && (width == 0 || height == 0)) return kBadSize;
        s = s.withShape(height, width);
        d = d.withShape(height, width);
        if (!qr::tablesOk(s, d, width * height)) return kNull;
        constexpr bool inRegisters = sizeof(T) == 4 && N != 0;
        constexpr uint32_t G = N <= 4 ? 4 : 2;
        for (uint32_t n = 0; n < count; ++n) {
            if constexpr (inRegisters) {
                // Objects G at a time while all are listed and all succeed.
                bool listed = n + G <= count;
                for (uint32_t g = 0; g < G && listed; ++g) listed = listsOk(n + g, s, d);
                if (listed) {
                    decltype(object(s, n)) from[G];
                    decltype(object(d, n)) to[G];
                    for (uint32_t g = 0; g < G; ++g) from[g] = object(s, n + g), to[g] = object(d, n + g);
                    if (packed::factoriseGroup<N, G, Adjacent>(from, scratch, to)) {
                        n += G - 1;
                        continue;
                    }
                }
            }
            if (!listsOk(n, s, d)) return kNull;
            vorxStatus st;
            if constexpr (inRegisters)
                st = packed::factorise<N, Adjacent>(object(s, n), scratch, object(d, n));
            else
                st = factorise<T, N>(object(s, n), scratch, object(d, n), width, height);
            if (st != kOk) return st;
        }
        return kOk;
    }
};

// A single matrix is the array call with one object: no count, no lists.
template <class T, int N, bool Adjacent>
struct DecompOne {
    template <class S, class D>
    [[gnu::flatten]] static vorxStatus run(S s, T* scratch, D d, uint32_t width, uint32_t height)
    {
        return DecompArray<T, N, Adjacent>::run(s, scratch, d, width, height, 1);
    }
};

}  // namespace qr

namespace tag {
struct QRDecomp_m : qr::Family<qr::DecompOne> {};
struct QRDecomp_ma : qr::Family<qr::DecompArray> {};
}  // namespace tag

}  // namespace vorx
