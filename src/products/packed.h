// The row-broadcast scheme of the fixed-size 32f products in Contiguous and List
// layouts. A result row is a sum of rows of op(src2) scaled by the elements of the
// row of op(src1): lanes hold columns, an element of op(src1) is broadcast to all
// lanes, and the sum runs k upward beginning with the first product (not with
// zero, so products that are all -0.0 give -0.0).
//
// op(src2) is held in registers, per size:
//   3  one register a row, element 0 in lane 0, elements 1, 2 in lanes 2, 3
//   4  one register a row
//   5  one register for columns 0..3, column 4 as a scalar beside it
//   6  one register for columns 0..3; columns 4, 5 of row k duplicated (c4, c5, c4, c5)
//      for a second pass that computes two result rows per register
#pragma once

#include "../frame/checks.h"
#include "../frame/sse.h"

namespace vorx::mul {

using sse::R;

inline R times(float x, R row) { return sse::mul(_mm_set1_ps(x), row); }
inline R plus(R acc, R p) { return sse::add(acc, p); }

// Columns 0..3 of row n of op(src2) (of one object), and the 3-lane row; a plain
// src2 at its row handle r, a transposed one gathered from its stored rows.
template <class B>
[[gnu::always_inline]] inline R row4(const B& b, typename B::Row r, uint32_t n)
{
    if constexpr (!isTr<B>) return sse::load4u(b.in(r, 0));
    else return _mm_setr_ps(*b.at(n, 0), *b.at(n, 1), *b.at(n, 2), *b.at(n, 3));
}
template <class B>
[[gnu::always_inline]] inline R row3(const B& b, typename B::Row r, uint32_t n)
{
    if constexpr (!isTr<B>) return sse::load3(b.in(r, 0));
    else return _mm_setr_ps(*b.at(n, 0), 0.0f, *b.at(n, 1), *b.at(n, 2));  // e0, 0, e1, e2
}
// Columns 4, 5 of row n, duplicated.                       lanes: c4, c5, c4, c5
template <class B>
[[gnu::always_inline]] inline R pair45(const B& b, typename B::Row r, uint32_t n)
{
    if constexpr (!isTr<B>) {
        R p = sse::load2low(b.in(r, 4));  // c4, c5, -, -
        return _mm_movelh_ps(p, p);
    } else {
        float c4 = *b.at(n, 4), c5 = *b.at(n, 5);
        return _mm_setr_ps(c4, c5, c4, c5);
    }
}

// Single: a one-object code; S1T, S2T: src1, src2 read transposed; Arr2: src2 changes per object.
// Two single-object shapes read part of src2 late, which decides what a call with
// dst = src2 gives: at size 5 a plain src2's column 4 is read from memory for each
// result row; at size 6 a transposed src2's columns 4, 5 are gathered after the
// first pass. Everywhere else op(src2) is read whole before the first store.
// The functions take one object of each operand; rows are walked down.
template <int N, bool Single, bool S1T, bool S2T, bool Arr2>
struct Packed {
    static constexpr bool col4Late = N == 5 && Single && !S2T;
    static constexpr bool pairsLate = N == 6 && Single && S2T;
    // A plain array src2's columns 4, 5 are read in the second pass (fewer registers
    // held through the first).
    static constexpr bool lazyPairs = N == 6 && Arr2 && !S2T;

    struct Src2 {
        R r[N];
        R t[N == 6 ? 6 : 1];
        float c4[N == 5 ? 5 : 1];

        template <class B>
        void load(const B& b)
        {
            auto row = b.row(0);
#pragma GCC unroll 6
            for (uint32_t n = 0; n < N; ++n) {
                r[n] = N == 3 ? row3(b, row, n) : row4(b, row, n);
                if constexpr (N == 5 && !col4Late) c4[n] = *b.in(row, 4);
                if constexpr (N == 6 && !pairsLate && !lazyPairs) t[n] = pair45(b, row, n);
                if (n + 1 < N) row = b.down(row);
            }
        }
        template <class B>
        void loadPairs(const B& b)
        {
            auto row = b.row(0);
#pragma GCC unroll 6
            for (uint32_t n = 0; n < 6; ++n) {
                t[n] = pair45(b, row, n);
                if (n + 1 < 6) row = b.down(row);
            }
        }
    };

    // Columns 0..3 (or the three of size 3) of the result row whose src1 row is ra.
    template <class A>
    [[gnu::always_inline]] static R rowSum(const A& a, typename A::Row ra, const Src2& h)
    {
        R acc = times(*a.in(ra, 0), h.r[0]);
#pragma GCC unroll 6
        for (uint32_t n = 1; n < N && n < 6; ++n) acc = plus(acc, times(*a.in(ra, n), h.r[n]));
        return acc;
    }

    // One object; an array src2 is loaded into a register set of the object's own.
    template <class A, class B, class D>
    [[gnu::always_inline]] static void object(const A& a, const B& b, const D& d, Src2& held)
    {
        if constexpr (Arr2) {
            Src2 h;
            h.load(b);
            compute(a, b, d, h);
        } else {
            compute(a, b, d, held);
        }
    }

    template <class A, class B, class D>
    [[gnu::always_inline]] static void compute(const A& a, const B& b, const D& d, Src2& h)
    {
        auto ra = a.row(0);
        float* rd = d.row(0);
        auto next = [&] {
            ra = a.down(ra);
            rd = d.down(rd);
        };
        if constexpr (N == 3) {
#pragma GCC unroll 4
            for (uint32_t i = 0; i < 3; ++i) {
                sse::store3(rd, rowSum(a, ra, h));
                if (i < 2) next();
            }
        } else if constexpr (N == 4) {
#pragma GCC unroll 4
            for (uint32_t i = 0; i < 4; ++i) {
                sse::store4u(rd, rowSum(a, ra, h));
                if (i < 3) next();
            }
        } else if constexpr (N == 5) {
            for (uint32_t i = 0; i < 5; ++i) {
                auto brow = b.row(0);
                auto c4 = [&](uint32_t n) {
                    if constexpr (col4Late) {
                        float v = *b.in(brow, 4);
                        if (n < 4) brow = b.down(brow);
                        return v;
                    } else {
                        return h.c4[n];
                    }
                };
                float x = *a.in(ra, 0);
                R acc = times(x, h.r[0]);
                float s4 = sse::mul(x, c4(0));
#pragma GCC unroll 5
                for (uint32_t n = 1; n < 5; ++n) {
                    x = *a.in(ra, n);
                    acc = plus(acc, times(x, h.r[n]));
                    s4 = sse::add(s4, sse::mul(x, c4(n)));
                }
                sse::store4u(rd, acc);
                rd[4] = s4;
                if (i < 4) next();
            }
        } else {
#pragma GCC unroll 6
            for (uint32_t i = 0; i < 6; ++i) {
                sse::store4u(rd, rowSum(a, ra, h));
                if (i < 5) next();
            }
            if constexpr (pairsLate) h.loadPairs(b);
            // Second pass: the three pairs of rows side by side, n upward in each; a
            // register holds (r, 4), (r, 5), (r+1, 4), (r+1, 5). A plain array src2's
            // columns 4, 5 are read here, one row at a time: the first pass stored
            // only columns 0..3, so dst = src2 still reads them as they were.
            R acc[3];
            auto r0 = a.row(0);
            auto brow = b.row(0);
#pragma GCC unroll 3
            for (uint32_t n = 0; n < 6; n += 2) {
                R t0, t1;
                if constexpr (lazyPairs) {
                    t0 = pair45(b, brow, n);
                    brow = b.down(brow);
                    t1 = pair45(b, brow, n + 1);
                    if (n < 4) brow = b.down(brow);
                } else {
                    t0 = h.t[n];
                    t1 = h.t[n + 1];
                }
                auto ra = r0;
#pragma GCC unroll 3
                for (uint32_t r = 0; r < 6; r += 2) {
                    R v0, v1;  // lanes: s1(r, n), s1(r, n), s1(r+1, n), s1(r+1, n); the same at n+1
                    if constexpr (!S1T) {
                        auto ra1 = a.down(ra);
                        R p = sse::load2low(a.in(ra, n));   // (r, n), (r, n+1), -, -
                        R q = sse::load2low(a.in(ra1, n));  // (r+1, n), (r+1, n+1), -, -
                        v0 = _mm_shuffle_ps(p, q, _MM_SHUFFLE(0, 0, 0, 0));
                        v1 = _mm_shuffle_ps(p, q, _MM_SHUFFLE(1, 1, 1, 1));
                        if (r < 4) ra = a.down(ra1);
                    } else {
                        // a transposed src1 stores (r, n) and (r+1, n) side by side
                        R p = sse::load2low(a.at(r, n));      // (r, n), (r+1, n), -, -
                        R q = sse::load2low(a.at(r, n + 1));  // (r, n+1), (r+1, n+1), -, -
                        v0 = _mm_shuffle_ps(p, p, _MM_SHUFFLE(1, 1, 0, 0));
                        v1 = _mm_shuffle_ps(q, q, _MM_SHUFFLE(1, 1, 0, 0));
                    }
                    R x = n == 0 ? sse::mul(v0, t0) : plus(acc[r / 2], sse::mul(v0, t0));
                    acc[r / 2] = plus(x, sse::mul(v1, t1));
                }
            }
            rd = d.row(0);
#pragma GCC unroll 3
            for (uint32_t r = 0; r < 6; r += 2) {
                float* rd1 = d.down(rd);
                sse::store2(rd + 4, acc[r / 2]);
                _mm_storeh_pi(sse::half(rd1 + 4), acc[r / 2]);
                if (r < 4) rd = d.down(rd1);
            }
        }
    }

    template <class A, class B, class D>
    static void single(const A& a, const B& b, const D& d)
    {
        Src2 h;
        h.load(b);
        compute(a, b, d, h);
    }
};

}  // namespace vorx::mul
