// The packed Frobenius norm of the 32f fixed sizes in Contiguous and List layout:
// four-lane sums of squares in a fixed tree per size, and the root as the
// processor's reciprocal-root estimate with one Newton step folded into the result
// (no root, no division, and no guard: a zero sum and an infinite one give NaN).
//
// rK is row K squared lane by lane, H(v) the horizontal sum (v0 + v2) + (v1 + v3):
//   3x3  rows in lanes as (a, 0, b, c), loaded without touching a byte past the row;
//        H((r0 + r1) + r2)
//   4x4  H((r0 + r1) + (r2 + r3))
//   5x5  H(((r0 + r1) + (r2 + r3)) + r4) over columns 0..3, then
//        + ((a04² + a14²) + (a24² + a34²)) + a44²
//   6x6  H(((r0 + r1) + (r2 + r3)) + (r4 + r5)) over columns 0..3,
//        + H((p0 + p1) + p2) with pK the squares of (a2K,4 a2K,5 a2K+1,4 a2K+1,5)
// Arrays of 5x5 and 6x6 go one object at a time. Arrays of 3x3 and 4x4 go in blocks
// of four objects transposed into lanes, one lane an object, with one 16-byte store
// of the four results; the count mod 4 objects left over go one at a time by the
// tree above, so an object's last bits depend on its place in the array.
#pragma once

#include "../frame/checks.h"
#include "../frame/sse.h"

namespace vorx::frob {

using sse::R;

template <bool A>
inline R load4(const float* p) { return A ? sse::load4a(p) : sse::load4u(p); }
inline R sq(R v) { return sse::mul(v, v); }

// (v0 + v2) + (v1 + v3) in lane 0.
inline R horizontal(R v)
{
    R s = sse::add(v, _mm_movehl_ps(v, v));  // v0+v2, v1+v3, .., ..
    return sse::add1(s, _mm_shuffle_ps(s, s, 1));
}

// y the estimate of 1/sqrt(x); p = x*(y*y), q = 3 - p, r = 0.5*q, u = y*r, x*u.
// In lane 0 alone (one object) or in all four lanes (a block).
template <bool Four>
inline R newton(R x)
{
    auto mul = [](R a, R b) { return Four ? sse::mul(a, b) : sse::mul1(a, b); };
    R y = Four ? _mm_rsqrt_ps(x) : _mm_rsqrt_ss(x);
    R p = mul(x, mul(y, y));
    R three = _mm_set1_ps(3.0f);
    R q = Four ? _mm_sub_ps(three, p) : _mm_sub_ss(three, p);
    R r = mul(_mm_set1_ps(0.5f), q);
    return mul(x, mul(y, r));
}

// The sum of squares of one object from its row addresses, in lane 0. `A`: the rows
// are 16-byte aligned (5x5 and 6x6 choose aligned loads then; the arithmetic is the same).
template <int N, bool A = false>
[[gnu::always_inline]] inline R tree(const float* const* r)
{
    if constexpr (N == 3) {
        R v = sse::add(sse::add(sq(sse::load3(r[0])), sq(sse::load3(r[1]))), sq(sse::load3(r[2])));
        return horizontal(v);
    } else if constexpr (N == 4) {
        R v = sse::add(sse::add(sq(sse::load4u(r[0])), sq(sse::load4u(r[1]))),
                       sse::add(sq(sse::load4u(r[2])), sq(sse::load4u(r[3]))));
        return horizontal(v);
    } else if constexpr (N == 5) {
        R v = sse::add(sse::add(sse::add(sq(load4<A>(r[0])), sq(load4<A>(r[1]))),
                                sse::add(sq(load4<A>(r[2])), sq(load4<A>(r[3])))),
                       sq(load4<A>(r[4])));
        R e[5];
#pragma GCC unroll 5
        for (int i = 0; i < 5; ++i) {
            R x = sse::load1(r[i] + 4);
            e[i] = sse::mul1(x, x);
        }
        R c = sse::add1(sse::add1(sse::add1(e[0], e[1]), sse::add1(e[2], e[3])), e[4]);
        return sse::add1(horizontal(v), c);
    } else {
        R v = sse::add(sse::add(sse::add(sq(load4<A>(r[0])), sq(load4<A>(r[1]))),
                                sse::add(sq(load4<A>(r[2])), sq(load4<A>(r[3])))),
                       sse::add(sq(load4<A>(r[4])), sq(load4<A>(r[5]))));
        R p[3];
#pragma GCC unroll 3
        for (int i = 0; i < 3; ++i)  // a(2i,4), a(2i,5), a(2i+1,4), a(2i+1,5)
            p[i] = sq(_mm_loadh_pi(sse::load2(r[2 * i] + 4), sse::half(r[2 * i + 1] + 4)));
        return sse::add1(horizontal(v), horizontal(sse::add(sse::add(p[0], p[1]), p[2])));
    }
}

// The 3x3 blocks load 16 bytes from each row start: the last 4 lie past the row
// (past the last object of a block too) and are never used, but must be readable.
// The address checker is told that this read is intended.
template <bool A>
[[gnu::no_sanitize_address]] inline R loadRowWide(const float* p)
{
    return A ? sse::load4a(p) : sse::load4u(p);
}

// Four objects, row i of object o at r[N*o + i]; the four sums, one per lane.
template <int N, bool A>
[[gnu::always_inline]] inline R block(const float* const* r)
{
    if constexpr (N == 4) {
        R c[4];  // per object: (r0 + r1) + (r2 + r3), the sums of its four columns
#pragma GCC unroll 4
        for (int o = 0; o < 4; ++o)
            c[o] = sse::add(sse::add(sq(load4<A>(r[4 * o])), sq(load4<A>(r[4 * o + 1]))),
                            sse::add(sq(load4<A>(r[4 * o + 2])), sq(load4<A>(r[4 * o + 3]))));
        _MM_TRANSPOSE4_PS(c[0], c[1], c[2], c[3]);  // c[J]: column J's sum, object o in lane o
        return sse::add(sse::add(c[0], c[1]), sse::add(c[2], c[3]));
    } else {
        // Row by row, the squares of element (i, j) of the four objects in q[j] (object
        // o in lane o), summed as soon as the tree allows, so that few registers
        // stay live: (((q00 + q01) + q22) + (q02 + q10)) + ((q11 + q12) + (q20 + q21)).
        R q[3];
        auto row = [&](int i) {
            R t0 = loadRowWide<A>(r[i]), t1 = loadRowWide<A>(r[3 + i]);
            R t2 = loadRowWide<A>(r[6 + i]), t3 = loadRowWide<A>(r[9 + i]);
            R lo01 = _mm_unpacklo_ps(t0, t1);  // t0[0], t1[0], t0[1], t1[1]
            R lo23 = _mm_unpacklo_ps(t2, t3);  // t2[0], t3[0], t2[1], t3[1]
            R hi01 = _mm_unpackhi_ps(t0, t1);  // t0[2], t1[2], t0[3], t1[3]
            R hi23 = _mm_unpackhi_ps(t2, t3);  // t2[2], t3[2], t2[3], t3[3]
            q[0] = sq(_mm_movelh_ps(lo01, lo23));  // element (i, 0) of objects 0..3
            q[1] = sq(_mm_movehl_ps(lo23, lo01));  // element (i, 1)
            q[2] = sq(_mm_movelh_ps(hi01, hi23));  // element (i, 2)
        };
        using sse::add;
        row(0);
        R a = add(q[0], q[1]), q02 = q[2];
        row(1);
        R b = add(q02, q[0]), c = add(q[1], q[2]);
        row(2);
        return add(add(add(a, q[2]), b), add(c, add(q[0], q[1])));
    }
}

inline bool aligned16(uintptr_t bits) { return (bits & 15) == 0; }
inline uintptr_t bits(const void* p) { return reinterpret_cast<uintptr_t>(p); }

// Objects are reached by their first row and the offsets of their rows (and of the
// rows of the next three objects, for the blocks), computed once per call.
template <int N>
struct Packed {
    static void rows(const float* p, const intptr_t* off, const float** r, int n = N)
    {
#pragma GCC unroll 24
        for (int i = 0; i < n; ++i) r[i] = byteAt(p, off[i]);
    }

    // One object into *d; `A`: 5x5 and 6x6 load aligned rows.
    template <bool A>
    [[gnu::always_inline]] static void one(const float* const* r, float* d)
    {
        sse::store1(d, newton<false>(N >= 5 ? tree<N, A>(r) : tree<N>(r)));
    }
    // Four objects into d[0..3], one 16-byte store.
    template <bool A>
    [[gnu::always_inline]] static void four(const float* const* r, float* d)
    {
        R x = newton<true>(block<N, A>(r));
        if (A) sse::store4a(d, x);
        else sse::store4u(d, x);
    }

    // One matrix; 5x5 and 6x6 test (src | row stride).
    template <class T>
    static void single(const Direct<T>& v, float* d)
    {
        intptr_t off[N];
        for (int i = 0; i < N; ++i) off[i] = step(i, v.rs);
        const float* r[N];
        rows(v.x, off, r);
        if (N >= 5 && aligned16(bits(v.x) | static_cast<uint32_t>(v.rs))) one<true>(r, d);
        else one<false>(r, d);
    }

    // Contiguous arrays: 3x3 and 4x4 in blocks of four while four are left, aligned
    // where (src | row stride | object stride | dst) is; 5x5 and 6x6 one at a time,
    // aligned where (src | row stride | object stride) is.
    template <class T>
    static vorxStatus run(const Direct<T>& v, float* d, uint32_t count)
    {
        uintptr_t b = bits(v.x) | static_cast<uint32_t>(v.rs) | static_cast<uint32_t>(v.os) | (N <= 4 ? bits(d) : 0);
        return aligned16(b) ? array<true>(v, d, count) : array<false>(v, d, count);
    }
    template <bool A, class T>
    static vorxStatus array(const Direct<T>& v, float* d, uint32_t count)
    {
        // Row i of object o of a block from the block's first row: o*os + i*rs. At 3x3
        // the addressing modes reach every row from o*os; at 4x4 a table of the
        // sixteen offsets made once costs less.
        intptr_t off[4 * N];
        for (int o = 0; o < 4; ++o)
            for (int i = 0; i < N; ++i) off[N * o + i] = step(o, v.os) + step(i, v.rs);
        const float* p = v.x;
        uint32_t k = 0;
        if constexpr (N <= 4)
            for (; count - k >= 4; k += 4, p = byteAt(p, step(4, v.os))) {
                const float* r[4 * N];
                if constexpr (N == 3) {
#pragma GCC unroll 4
                    for (int o = 0; o < 4; ++o)
#pragma GCC unroll 3
                        for (int i = 0; i < 3; ++i) r[3 * o + i] = byteAt(p, step(o, v.os) + step(i, v.rs));
                } else {
                    rows(p, off, r, 4 * N);
                }
                four<A>(r, d + k);
            }
        for (; k < count; ++k, p = byteAt(p, v.os)) {
            const float* r[N];
            rows(p, off, r);
            one<A>(r, d + k);
        }
        return kOk;
    }

    // List arrays: the same per block or per object, on the entries after the shift;
    // a block tests its four list entries together before it starts.
    template <class T>
    static vorxStatus run(const ObjTable<T>& v, float* d, uint32_t count)
    {
        intptr_t off[4 * N];  // row i of any object: i*rs, four times over
        for (int o = 0; o < 4; ++o)
            for (int i = 0; i < N; ++i) off[N * o + i] = step(i, v.rs);
        const uintptr_t rs = static_cast<uint32_t>(v.rs);
        uint32_t k = 0;
        if constexpr (N <= 4)
            for (; count - k >= 4; k += 4) {
                if (!(v.entry(k) && v.entry(k + 1) && v.entry(k + 2) && v.entry(k + 3))) return kNull;
                const float* r[4 * N];
                uintptr_t b = rs | bits(d + k);
                for (int o = 0; o < 4; ++o) {
                    const float* p = v.row(k + o, 0);
                    b |= bits(p);
                    rows(p, off, r + N * o);
                }
                if (aligned16(b)) four<true>(r, d + k);
                else four<false>(r, d + k);
            }
        for (; k < count; ++k) {
            if (!v.entry(k)) return kNull;
            const float* r[N];
            const float* p = v.row(k, 0);
            rows(p, off, r);
            if (N >= 5 && aligned16(bits(p) | rs)) one<true>(r, d + k);
            else one<false>(r, d + k);
        }
        return kOk;
    }
};

}  // namespace vorx::frob
