// Frobenius norm: the root of the sum of squares of all elements, of one matrix or
// of each of an array, into a plain array of results (one per object, adjacent).
//
// The scalar way, every member but the packed ones (frobpacked.h): the sum starts
// at +0 and adds the squares of one matrix row by row, of an array's matrices column
// by column, also at the fixed sizes. 32f rounds every product and sum to single
// and takes the single-precision root; 64f keeps the sum in the x87 register and
// takes the x87 root, rounded once by the store.
#pragma once

#include "../frame/tag.h"
#include "../frame/x87.h"
#include "frobpacked.h"

namespace vorx::frob {

// The sum over one object (a view's `object(k)`). `Entries`: the single-matrix
// Pointer form tests each entry just before it reads it; at a null it stops before
// storing anything. A fixed size passes its bounds as constants and the loops open out.
template <bool ByRows, bool Entries, class O, class Acc, class Add>
[[gnu::always_inline]] inline bool sumSquares(const O& o, uint32_t w, uint32_t h, Acc& s, Add add)
{
    if (ByRows) {
#pragma GCC unroll 6
        for (uint32_t i = 0; i < h; ++i)
#pragma GCC unroll 6
            for (uint32_t j = 0; j < w; ++j) {
                if (Entries && !readOk(o, i, j)) return false;
                add(s, *o.at(i, j));
            }
    } else {
#pragma GCC unroll 6
        for (uint32_t j = 0; j < w; ++j)
#pragma GCC unroll 6
            for (uint32_t i = 0; i < h; ++i) add(s, *o.at(i, j));
    }
    return true;
}

template <bool ByRows, bool Entries, class O>
bool norm(const O& o, uint32_t w, uint32_t h, float* d)
{
    float s = 0.0f;
    auto add = [](float& s, float a) { s = sse::add(s, sse::mul(a, a)); };
    if (!sumSquares<ByRows, Entries>(o, w, h, s, add)) return false;
    sse::store1(d, _mm_sqrt_ss(_mm_set_ss(s)));
    return true;
}
template <bool ByRows, bool Entries, class O>
bool norm(const O& o, uint32_t w, uint32_t h, double* d)
{
    long double s = 0.0L;
    auto add = [](long double& s, double a) { s = s + wide(a) * wide(a); };
    if (!sumSquares<ByRows, Entries>(o, w, h, s, add)) return false;
    *d = static_cast<double>(__builtin_sqrtl(s));
    return true;
}

template <class T, int N, Lay L>
struct Impl {
    static constexpr bool packed = sizeof(T) == 4 && N > 0 && adjacent(L);

    template <class S>
    static vorxStatus run(S s, uint32_t w, uint32_t h, T* d)
    {
        if (anyNull(s) || !d) return kNull;
        if (N == 0 && (w == 0 || h == 0)) return kBadSize;
        if constexpr (packed) {
            Packed<N>::single(s, d);
            return kOk;
        } else {
            s = s.withShape(h, w);
            return norm<true, L == Lay::P>(s.object(0), N ? N : w, N ? N : h, d) ? kOk : kNull;
        }
    }

    // The Pointer tables are scanned over all width*height entries.
    template <class S>
    static vorxStatus run(S s, uint32_t w, uint32_t h, T* d, uint32_t count)
    {
        if constexpr (packed) {
            if (anyNull(s) || !d) return kNull;
            return count ? Packed<N>::run(s, d, count) : kOk;
        } else {
            if (!d) return kNull;
            s = s.withShape(h, w);
            const uint32_t W = N ? N : w, H = N ? N : h;
            return arrayCall(N == 0 && (w == 0 || h == 0), W * H, count, nothing,
                             [&](uint32_t k) { norm<false, false>(s.object(k), W, H, d + k); }, s);
        }
    }
};

}  // namespace vorx::frob

namespace vorx::tag {
struct FrobNorm_m : By<frob::Impl> {};
struct FrobNorm_ma : By<frob::Impl> {};
}  // namespace vorx::tag
