// QR decomposition by Householder reflections, one matrix or an array of them, of
// `height` rows and `width` columns (square or tall), for both element types and
// every layout. The source is copied into dst and reduced there; the caller's
// scratch of `height` elements holds the vector of the step at hand and serves
// every object of an array in turn.
//
// One set of loops serves every member: a fixed size is the run-time loop with the
// order as a constant, no closed form. Arrays take their objects two or four at a
// time, side by side in copies (the 32f fixed sizes in SSE registers, packed.h),
// storing them when all succeed; a group with a failing or unlisted object is
// taken again one object at a time, in dst, so that what a failure leaves is the
// same.
#pragma once

#include "packed.h"

namespace vorx {
namespace qr {

// The steps of O objects side by side, each phase object after object, so that the
// processor has the independent work of the others beside each one's long chain
// of dependent operations: one reflection per step k, each sum ascending. d[o] is
// the object reduced in place, v[o] where it keeps the vector of the step. A
// single object writes scratch as it goes (its v is scratch, or a local copy for a
// fixed order, which no store to dst can change); objects side by side leave it
// alone. Returns the first step at which a column of one of them cannot be
// reflected (a width above the height fails at step `height`, whose sum is
// empty), or the number of steps.
template <class T, int N, int O, class D>
inline uint32_t reduce(const D* d, T* const* v, T* scratch, uint32_t widthArg, uint32_t heightArg)
{
    using A = Arith<T>;
    using W = typename A::W;
    const uint32_t width = N ? N : widthArg, height = N ? N : heightArg;
    const uint32_t steps = reflectors(width, height);
#pragma GCC unroll 8
    for (uint32_t k = 0; k < steps; ++k) {
        W sum[O], r[O], beta[O];
#pragma GCC unroll 4
        for (int o = 0; o < O; ++o) {
            sum[o] = 0;
#pragma GCC unroll 8
            for (uint32_t i = k; i < height; ++i) {
                W x = A::load(d[o].at(i, k));
                sum[o] = A::add(sum[o], A::mul(x, x));
            }
        }
#pragma GCC unroll 4
        for (int o = 0; o < O; ++o)
            if (!A::passes(sum[o])) return k;
        // c = a + norm or a - norm by the sign of a, so that it never cancels; v =
        // (1, dst[k+1..][k] r); w = v'v from the products as formed (in 64f before
        // their rounding).
#pragma GCC unroll 4
        for (int o = 0; o < O; ++o) r[o] = W(1) / A::away(A::load(d[o].at(k, k)), A::root(sum[o]));
#pragma GCC unroll 4
        for (int o = 0; o < O; ++o) {
            if (scratch) scratch[k] = T(1);
            v[o][k] = T(1);
            W w = 1;
#pragma GCC unroll 8
            for (uint32_t i = k + 1; i < height; ++i) {
                W p = A::mul(A::load(d[o].at(i, k)), r[o]);
                A::store(scratch ? &scratch[i] : &v[o][i], p);
                if (N != 0 && scratch) v[o][i] = scratch[i];
                w = A::add(w, A::mul(p, p));
            }
            beta[o] = W(-2) / w;
        }
        // Columns k and on, column k included: its elements below the diagonal are
        // replaced by the tail next.
#pragma GCC unroll 8
        for (uint32_t j = k; j < width; ++j)
#pragma GCC unroll 4
            for (int o = 0; o < O; ++o) {
                W t = A::load(d[o].at(k, j));
#pragma GCC unroll 8
                for (uint32_t i = k + 1; i < height; ++i)
                    t = A::add(t, A::mul(A::load(d[o].at(i, j)), A::load(&v[o][i])));
                t = A::mul(t, beta[o]);
#pragma GCC unroll 8
                for (uint32_t i = k; i < height; ++i)
                    A::store(d[o].at(i, j), A::add(A::load(d[o].at(i, j)), A::mul(A::load(&v[o][i]), t)));
            }
#pragma GCC unroll 4
        for (int o = 0; o < O; ++o)
#pragma GCC unroll 8
            for (uint32_t i = k + 1; i < height; ++i) copyBits(d[o].at(i, k), &v[o][i]);
    }
    return steps;
}

// One object: copied into dst and reduced there; a failing step leaves the steps
// before it in dst.
template <class T, int N, class S, class D>
inline vorxStatus factorise(const S& src, T* scratch, const D& dst, uint32_t widthArg, uint32_t heightArg)
{
    const uint32_t width = N ? N : widthArg, height = N ? N : heightArg;
#pragma GCC unroll 8
    for (uint32_t i = 0; i < height; ++i)
#pragma GCC unroll 8
        for (uint32_t j = 0; j < width; ++j) copyBits(dst.at(i, j), src.at(i, j));
    Kept<T, N> kept;
    T* v = kept.at(scratch);
    return reduce<T, N, 1>(&dst, &v, scratch, width, height) == reflectors(width, height) ? kOk : kZeroDivide;
}

// The largest run-time object taken side by side with others.
constexpr uint32_t kGroupElements = 36;

// O objects side by side in dense copies, stored only when all succeed: false
// leaves dst and scratch untouched, for the caller to take the objects one by one.
// Nothing of them is stored before all are read, so objects must not share memory
// across the group (dst on its own src is fine). Scratch is left as the last
// object leaves it: 1.0 up to the last step, then that step's tail.
template <class T, int N, int O, class S, class D>
inline bool factoriseGroup(const S* src, T* scratch, const D* dst, uint32_t widthArg, uint32_t heightArg)
{
    const uint32_t width = N ? N : widthArg, height = N ? N : heightArg;
    T m[O][N ? N * N : kGroupElements], tail[O][N ? N : kGroupElements];
    Strided<T> d[O];
    T* v[O];
#pragma GCC unroll 4
    for (int o = 0; o < O; ++o) {
        d[o] = {m[o], static_cast<int32_t>(width * sizeof(T)), sizeof(T)};
        v[o] = tail[o];
#pragma GCC unroll 8
        for (uint32_t i = 0; i < height; ++i)
#pragma GCC unroll 8
            for (uint32_t j = 0; j < width; ++j) copyBits(d[o].at(i, j), src[o].at(i, j));
    }
    const uint32_t steps = reflectors(width, height);
    if (reduce<T, N, O>(d, v, static_cast<T*>(nullptr), width, height) != steps) return false;
#pragma GCC unroll 4
    for (int o = 0; o < O; ++o)
#pragma GCC unroll 8
        for (uint32_t i = 0; i < height; ++i)
#pragma GCC unroll 8
            for (uint32_t j = 0; j < width; ++j) copyBits(dst[o].at(i, j), d[o].at(i, j));
    for (uint32_t k = 0; k < steps; ++k) scratch[k] = T(1);
    if (steps)
        for (uint32_t i = steps; i < height; ++i) copyBits(&scratch[i], d[O - 1].at(i, steps - 1));
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
        // Pointer layouts: every entry of both tables, without any object's shift,
        // before anything is copied and before the count test.
        if (!tablesOk(width * height, s, d)) return kNull;
        constexpr bool inRegisters = sizeof(T) == 4 && N != 0;
        constexpr uint32_t G = inRegisters && N <= 4 ? 4 : 2;
        const bool grouped = N != 0 || (width <= height && width * height <= kGroupElements);
        for (uint32_t n = 0; n < count; ++n) {
            // Objects G at a time while all are listed and all succeed.
            bool listed = grouped && n + G <= count;
            for (uint32_t g = 0; g < G && listed; ++g) listed = listsOk(n + g, s, d);
            if (listed) {
                decltype(object(s, n)) from[G];
                decltype(object(d, n)) to[G];
                for (uint32_t g = 0; g < G; ++g) from[g] = object(s, n + g), to[g] = object(d, n + g);
                bool done;
                if constexpr (inRegisters)
                    done = packed::factoriseGroup<N, G, Adjacent>(from, scratch, to);
                else
                    done = factoriseGroup<T, N, G>(from, scratch, to, width, height);
                if (done) {
                    n += G - 1;
                    continue;
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
