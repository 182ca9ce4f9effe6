// The two-by-two tiles of the 32f fixed-size transposes in Contiguous and List
// layout. A tile is source rows i, i+1 by columns j, j+1: two 8-byte loads, one
// shuffle that swaps the middle lanes, two 8-byte stores at dst rows j, j+1.
//
// The order of loads and stores decides what a call with dst on src gives, so it is
// fixed per size: 3x3 one tile, then the five other elements in source row order;
// 4x4 all four tiles loaded before the first store; 5x5 the four tiles of rows and
// columns 0..3 each loaded and stored in turn, then column 4 and row 4 in source row
// order; 6x6 nine tiles, each loaded and stored in turn, in row order.
#pragma once

#include "../frame/sse.h"
#include "move.h"

namespace vorx::transpose {

using sse::R;

// Rows i and i+1 from column j.           lanes: s[i][j], s[i+1][j], s[i][j+1], s[i+1][j+1]
inline R loadTile(const float* r0, const float* r1)
{
    R v = _mm_loadh_pi(sse::load2(r0), sse::half(r1));  // s[i][j], s[i][j+1], s[i+1][j], s[i+1][j+1]
    return _mm_shuffle_ps(v, v, _MM_SHUFFLE(3, 1, 2, 0));
}
// The low half to dst row j, the high half to dst row j+1, both from column i.
inline void storeTile(float* d0, float* d1, R v)
{
    sse::store2(d0, v);
    _mm_storeh_pi(sse::half(d1), v);
}

template <int N>
struct Tiles {
    // Source row i at a[i], dst row j at b[j].
    [[gnu::always_inline]] static void object(const float* const* a, float* const* b)
    {
        auto tile = [&](uint32_t i, uint32_t j) { return loadTile(a[i] + j, a[i + 1] + j); };
        auto put = [&](uint32_t i, uint32_t j, R v) { storeTile(b[j] + i, b[j + 1] + i, v); };
        auto one = [&](uint32_t i, uint32_t j) { shape::move(b[j] + i, a[i] + j); };
        if constexpr (N == 4) {
            R t00 = tile(0, 0), t02 = tile(0, 2), t20 = tile(2, 0), t22 = tile(2, 2);
            put(0, 0, t00);
            put(0, 2, t02);
            put(2, 0, t20);
            put(2, 2, t22);
        } else {
            constexpr uint32_t T = N & ~1u;  // rows and columns the tiles cover
#pragma GCC unroll 3
            for (uint32_t i = 0; i < T; i += 2)
#pragma GCC unroll 3
                for (uint32_t j = 0; j < T; j += 2) put(i, j, tile(i, j));
            if constexpr (N & 1) {
#pragma GCC unroll 6
                for (uint32_t i = 0; i < N; ++i)
#pragma GCC unroll 6
                    for (uint32_t j = i < T ? T : 0; j < N; ++j) one(i, j);
            }
        }
    }

    // Object k of Contiguous or List views: its first rows, and the rows' offsets
    // from them computed once per call.
    template <class S, class D>
    struct Objects {
        const S& s;
        const D& d;
        intptr_t so[N], dso[N];
        Objects(const S& src, const D& dst) : s(src), d(dst)
        {
            for (int i = 0; i < N; ++i) so[i] = step(i, s.rs), dso[i] = step(i, d.rs);
        }
        [[gnu::always_inline]] void operator()(uint32_t k) const
        {
            const float* p = s.row(k, 0);
            float* q = d.row(k, 0);
            const float* a[N];
            float* b[N];
#pragma GCC unroll 6
            for (int i = 0; i < N; ++i) a[i] = byteAt(p, so[i]), b[i] = byteAt(q, dso[i]);
            object(a, b);
        }
    };
    template <class S, class D>
    static Objects<S, D> objects(const S& s, const D& d) { return {s, d}; }
};

}  // namespace vorx::transpose
