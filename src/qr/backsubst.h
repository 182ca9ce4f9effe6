// Solving A x = b, in the least-squares sense when A is tall, from the factor the
// decomposition leaves: the stored reflectors applied to a copy of b in scratch in
// the order of their making, then R solved from the bottom. One factor with one
// right side (mv), one factor for an array of right sides (mva), or arrays of both
// paired one to one (mava). Nothing is tested: a zero on the diagonal gives an
// infinity or a NaN, and status 0.
#pragma once

#include "decomp.h"

namespace vorx {
namespace qr {

// O objects side by side, each phase object after object (as in the
// decomposition), sc[o] the working copy of each b: the caller's scratch for one
// object. src2 is read only by the copy, so dst may be src2. A width above the
// height reads scratch up to `width` elements and means nothing.
template <class T, int N, int O, class M, class B, class X>
inline void substitute(const M* m, T* const* sc, const B* b, const X* x, uint32_t widthArg, uint32_t heightArg)
{
    using A = Arith<T>;
    using W = typename A::W;
    const uint32_t width = N ? N : widthArg, height = N ? N : heightArg;
#pragma GCC unroll 4
    for (int o = 0; o < O; ++o)
#pragma GCC unroll 8
        for (uint32_t i = 0; i < height; ++i) copyBits(&sc[o][i], b[o].at(0, i));
    const uint32_t steps = reflectors(width, height);
#pragma GCC unroll 8
    for (uint32_t k = 0; k < steps; ++k)
#pragma GCC unroll 4
        for (int o = 0; o < O; ++o) {
            // w = v'v again, from the tail in the order the decomposition formed it;
            // a fixed order keeps the tail for the update.
            T* s = sc[o];
            W w = 1;
            W t = A::load(&s[k]);
            W tail[N ? N : 1];
#pragma GCC unroll 8
            for (uint32_t i = k + 1; i < height; ++i) {
                W a = A::load(m[o].at(i, k));
                if constexpr (N != 0) tail[i] = a;
                w = A::add(w, A::mul(a, a));
                t = A::add(t, A::mul(A::load(&s[i]), a));
            }
            t = A::mul(t, W(-2) / w);
            A::store(&s[k], A::add(A::load(&s[k]), t));
#pragma GCC unroll 8
            for (uint32_t i = k + 1; i < height; ++i) {
                W a = N != 0 ? tail[i] : A::load(m[o].at(i, k));
                A::store(&s[i], A::add(A::load(&s[i]), A::mul(a, t)));
            }
        }
    // R x = scratch from the bottom: each row's sum built from zero, ascending, and
    // subtracted once; a true division by every diagonal element. Width 1 ends
    // after dst[0].
    const uint32_t z = width - 1;
#pragma GCC unroll 4
    for (int o = 0; o < O; ++o) A::store(x[o].at(0, z), A::load(&sc[o][z]) / A::load(m[o].at(z, z)));
#pragma GCC unroll 8
    for (uint32_t q = 1; q < width; ++q)
#pragma GCC unroll 4
        for (int o = 0; o < O; ++o) {
            const uint32_t r = z - q;
            W u = 0;
#pragma GCC unroll 8
            for (uint32_t j = r + 1; j < width; ++j)
                u = A::add(u, A::mul(A::load(m[o].at(r, j)), A::load(x[o].at(0, j))));
            A::store(x[o].at(0, r), (A::load(&sc[o][r]) - u) / A::load(m[o].at(r, r)));
        }
}

// The whole call; a single right side is the array call with one object and no
// count. The list entries of an object (src2 and dst, and src1 in mava; the one
// factor of mva is plain memory) are tested just before it.
template <class T, int N, bool>
struct SolveArray {
    template <class M, class B, class X>
    [[gnu::flatten]] static vorxStatus run(M m, T* scratch, B b, X x, uint32_t width, uint32_t height,
                                           uint32_t count)
    {
        if (anyNull(m, b, x) || !scratch) return kNull;
        if (N == 0 && (width == 0 || height == 0)) return kBadSize;
        m = m.withShape(height, width);
        b = b.withShape(1, height);
        x = x.withShape(1, width);
        // Pointer layouts: every entry of the factor, and the entries of src2 and dst
        // below `width`. The src2 entries from `width` to `height` - 1 are read by
        // the copy but never tested.
        if (!tableOk(m, width * height) || !tableOk(b, width) || !tableOk(x, width)) return kNull;
        // Two objects at a time while both are listed, each with a working copy of
        // its b; scratch is left with the second one's.
        constexpr uint32_t G = 2;
        const bool grouped = width <= height && height <= kGroupElements;
        for (uint32_t n = 0; n < count; ++n) {
            if (grouped && n + G <= count && listsOk(n, m, b, x) && listsOk(n + 1, m, b, x)) {
                T work[G][N ? N : kGroupElements];
                T* sc[G] = {work[0], work[1]};
                decltype(object(m, n)) ms[G] = {object(m, n), object(m, n + 1)};
                decltype(object(b, n)) bs[G] = {object(b, n), object(b, n + 1)};
                decltype(object(x, n)) xs[G] = {object(x, n), object(x, n + 1)};
                substitute<T, N, G>(ms, sc, bs, xs, width, height);
                for (uint32_t i = 0; i < (N ? N : height); ++i) copyBits(&scratch[i], &work[G - 1][i]);
                ++n;
                continue;
            }
            if (!listsOk(n, m, b, x)) return kNull;
            auto mo = object(m, n);
            auto bo = object(b, n);
            auto xo = object(x, n);
            substitute<T, N, 1>(&mo, &scratch, &bo, &xo, width, height);
        }
        return kOk;
    }
};

template <class T, int N, bool Adjacent>
struct SolveOne {
    template <class M, class B, class X>
    [[gnu::flatten]] static vorxStatus run(M m, T* scratch, B b, X x, uint32_t width, uint32_t height)
    {
        return SolveArray<T, N, Adjacent>::run(m, scratch, b, x, width, height, 1);
    }
};

}  // namespace qr

namespace tag {
struct QRBackSubst_mv : qr::Family<qr::SolveOne> {};
struct QRBackSubst_mva : qr::Family<qr::SolveArray> {};
struct QRBackSubst_mava : qr::Family<qr::SolveArray> {};
}  // namespace tag

}  // namespace vorx
