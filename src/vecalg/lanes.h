// Register work of the vector functionals in 32f: four objects transposed into
// lanes, the orders of summation as named sums, the two square-root regimes and the
// eight-way sum of the long single vectors.
//
// The orders are written once for a four-lane register (four objects, one per lane)
// and for a scalar (one object), so a grouped object and a remainder object that
// share an order give the same bits.
#pragma once

#include "../elementwise/vector.h"

namespace vorx::lanes {

using sse::R;

// The products of an object's elements, one register of its size (VecReg).
struct MulOp {
    static R p(R a, R b) { return sse::mul(a, b); }
    static R p1(R a, R b) { return sse::mul1(a, b); }
};

// One object of N elements in the registers of its size (VecReg), elements 0..3 by
// one unaligned full move; exactly the object's elements are read.
template <int N>
VecReg<N> load(const float* p)
{
    if constexpr (N == 3) {
        return VecReg<3>::load(p);
    } else {
        VecReg<N> v{};
        v.r = sse::load4u(p);
        if constexpr (N == 5) v.s = sse::load1(p + 4);
        if constexpr (N == 6) v.s = sse::load2(p + 4);
        return v;
    }
}

// The N elements of one object's registers as scalars, in element order.
template <int I>
float lane(R r) { return _mm_cvtss_f32(_mm_shuffle_ps(r, r, I)); }
template <int N>
void scalars(const VecReg<N>& v, float* p)
{
    if constexpr (N == 3) {  // lanes: e0, 0, e1, e2
        p[0] = lane<0>(v.r), p[1] = lane<2>(v.r), p[2] = lane<3>(v.r);
    } else {
        p[0] = lane<0>(v.r), p[1] = lane<1>(v.r), p[2] = lane<2>(v.r), p[3] = lane<3>(v.r);
        if constexpr (N >= 5) p[4] = lane<0>(v.s);
        if constexpr (N == 6) p[5] = lane<1>(v.s);
    }
}

// Four objects in lanes: x[j] lane q holds element j of object q.
template <int N>
struct Four {
    R x[N];
};

// Four 3-element objects lying back to back, as three full registers
//   a0 = x0 y0 z0 x1,  a1 = y1 z1 x2 y2,  a2 = z2 x3 y3 z3,
// into lanes (x, y, z: elements 0, 1, 2), and back.
inline Four<3> packed3(R a0, R a1, R a2)
{
    R t = _mm_shuffle_ps(a1, a2, _MM_SHUFFLE(2, 1, 3, 2));  // x2 y2 x3 y3
    R u = _mm_shuffle_ps(a0, a1, _MM_SHUFFLE(0, 0, 1, 1));  // y0 y0 y1 y1
    R v = _mm_shuffle_ps(a0, a1, _MM_SHUFFLE(1, 1, 2, 2));  // z0 z0 z1 z1
    return {{_mm_shuffle_ps(a0, t, _MM_SHUFFLE(2, 0, 3, 0)),    // x0 x1 x2 x3
             _mm_shuffle_ps(u, t, _MM_SHUFFLE(3, 1, 2, 0)),     // y0 y1 y2 y3
             _mm_shuffle_ps(v, a2, _MM_SHUFFLE(3, 0, 2, 0))}};  // z0 z1 z2 z3
}
inline void unpacked3(const Four<3>& f, R& a0, R& a1, R& a2)
{
    R x = f.x[0], y = f.x[1], z = f.x[2];
    R l = _mm_unpacklo_ps(x, y);                                                       // x0 y0 x1 y1
    R h = _mm_unpackhi_ps(x, y);                                                       // x2 y2 x3 y3
    a0 = _mm_shuffle_ps(l, _mm_shuffle_ps(z, x, _MM_SHUFFLE(1, 1, 0, 0)), _MM_SHUFFLE(2, 0, 1, 0));
    a1 = _mm_shuffle_ps(_mm_shuffle_ps(y, z, _MM_SHUFFLE(1, 1, 1, 1)), h, _MM_SHUFFLE(1, 0, 2, 0));
    a2 = _mm_shuffle_ps(_mm_shuffle_ps(z, x, _MM_SHUFFLE(3, 3, 2, 2)), _mm_shuffle_ps(y, z, _MM_SHUFFLE(3, 3, 3, 3)),
                        _MM_SHUFFLE(2, 0, 2, 0));
}

template <int N>
Four<N> transpose(const VecReg<N>& o0, const VecReg<N>& o1, const VecReg<N>& o2, const VecReg<N>& o3)
{
    Four<N> f;
    R a = o0.r, b = o1.r, c = o2.r, d = o3.r;
    _MM_TRANSPOSE4_PS(a, b, c, d);
    if constexpr (N == 3) {
        f.x[0] = a;  // b: the zero lane 1 of the 3-element scheme
        f.x[1] = c;
        f.x[2] = d;
    } else {
        f.x[0] = a;
        f.x[1] = b;
        f.x[2] = c;
        f.x[3] = d;
    }
    if constexpr (N == 5)  // lanes of s: e4, 0, 0, 0
        f.x[4] = _mm_movelh_ps(_mm_unpacklo_ps(o0.s, o1.s), _mm_unpacklo_ps(o2.s, o3.s));
    if constexpr (N == 6) {  // lanes of s: e4, e5, 0, 0
        R lo = _mm_unpacklo_ps(o0.s, o1.s);  // o0e4, o1e4, o0e5, o1e5
        R hi = _mm_unpacklo_ps(o2.s, o3.s);  // o2e4, o3e4, o2e5, o3e5
        f.x[4] = _mm_movelh_ps(lo, hi);
        f.x[5] = _mm_movehl_ps(hi, lo);
    }
    return f;
}

// The orders of summation of N terms p[0..N-1], for V a register of four objects or
// a float. Each addition keeps its left operand first.
using sse::add;
template <class V> inline V zero();
template <> inline R zero<R>() { return sse::zero(); }
template <> inline float zero<float>() { return 0.0f; }

template <int N>
struct LeftToRight {  // ((+0.0 + p0) + p1) + ...
    template <class V>
    static V of(const V* p)
    {
        V s = zero<V>();
        for (int j = 0; j < N; ++j) s = add(s, p[j]);
        return s;
    }
};
struct Sum3 {  // (p0+p1)+p2
    template <class V> static V of(const V* p) { return add(add(p[0], p[1]), p[2]); }
};
struct Outer3 {  // (p0+p2)+p1
    template <class V> static V of(const V* p) { return add(add(p[0], p[2]), p[1]); }
};
struct Pairs4 {  // (p0+p1)+(p2+p3)
    template <class V> static V of(const V* p) { return add(add(p[0], p[1]), add(p[2], p[3])); }
};
struct Chain4 {  // ((p0+p1)+p2)+p3
    template <class V> static V of(const V* p) { return add(add(add(p[0], p[1]), p[2]), p[3]); }
};
struct Pairs5 {  // ((p0+p1)+(p2+p3))+p4
    template <class V> static V of(const V* p) { return add(Pairs4::of(p), p[4]); }
};
struct Strided5 {  // ((p0+p2)+(p1+p3))+p4
    template <class V> static V of(const V* p) { return add(add(add(p[0], p[2]), add(p[1], p[3])), p[4]); }
};
struct Pairs6 {  // ((p0+p1)+(p2+p3))+(p4+p5)
    template <class V> static V of(const V* p) { return add(Pairs4::of(p), add(p[4], p[5])); }
};
struct Strided6 {  // ((p0+p2)+p4)+((p1+p3)+p5)
    template <class V> static V of(const V* p) { return add(add(add(p[0], p[2]), p[4]), add(add(p[1], p[3]), p[5])); }
};

// Square roots of a sum s. The exact regime: the single-precision root instruction.
inline float exactRoot(float s) { return _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(s))); }

// The estimate regime: the reciprocal-root estimate y0, then one Newton step with
// every operation rounded to single, in this order and with no guard:
//   a = y0*y0, b = a*s, c = 3 - b, d = c*0.5, y1 = y0*d, root = s*y1.
// So s = 0 gives NaN (infinity times zero), a denormal s whose estimate overflows a
// gives -infinity, and s = infinity gives NaN (estimate 0).
inline R estimate(R s) { return _mm_rsqrt_ps(s); }
inline float estimate(float s) { return _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(s))); }
inline R minus(R a, R b) { return _mm_sub_ps(a, b); }
inline float minus(float a, float b) { return a - b; }
inline R konst(R, float c) { return sse::broadcast(c); }
inline float konst(float, float c) { return c; }

template <class V>
V estimatedRoot(V s)
{
    V y0 = estimate(s);
    V a = sse::mul(y0, y0);
    V b = sse::mul(a, s);
    V c = minus(konst(s, 3.0f), b);
    V d = sse::mul(c, konst(s, 0.5f));
    V y1 = sse::mul(y0, d);
    return sse::mul(s, y1);
}

// The eight-way sum of p[j] = a[j]*b[j] (Square: a[j]*a[j], with b = a), keyed on
// the address of b, for 11 terms and more:
//   b not on 4 bytes: left to right from +0.0;
//   else t = (16 - b mod 16)/4 leading terms (0 when b is on 16) summed into S from
//   +0.0; accumulators A = (S, 0, 0, 0) and B = 0 take eight terms a turn, lane j of
//   A term t+8m+j and lane j of B term t+8m+4+j; then C = A + B, the sum
//   (C0+C2)+(C1+C3), and the last terms, fewer than 8, one by one.
// b is read with aligned loads, a (in products) unaligned; a non-temporal prefetch
// runs 64 bytes ahead in both.
template <bool Square>
[[gnu::always_inline]] inline float eightWay(const float* a, const float* b, uint32_t len)
{
    auto term = [&](uint32_t j) { return Square ? sse::mul(b[j], b[j]) : sse::mul(a[j], b[j]); };
    auto terms = [&](uint32_t j) {
        R y = sse::load4a(b + j);
        return Square ? sse::mul(y, y) : sse::mul(sse::load4u(a + j), y);
    };
    uintptr_t key = reinterpret_cast<uintptr_t>(b) & 15;
    float s = 0.0f;
    uint32_t j = 0;
    if (len >= 11 && (key & 3) == 0) {
        for (uint32_t t = key ? static_cast<uint32_t>(16 - key) / 4 : 0; j < t; ++j) s = add(s, term(j));
        R A = _mm_set_ss(s), B = sse::zero();
        for (; len - j >= 8; j += 8) {
            if (!Square) sse::prefetchNta(a + j + 16);
            sse::prefetchNta(b + j + 16);
            A = add(A, terms(j));
            B = add(B, terms(j + 4));
        }
        R C = add(A, B);
        R D = add(C, _mm_movehl_ps(C, C));                       // C0+C2, C1+C3, ..
        s = _mm_cvtss_f32(sse::add1(D, _mm_shuffle_ps(D, D, 1)));  // (C0+C2)+(C1+C3)
    }
    for (; j < len; ++j) s = add(s, term(j));
    return s;
}

}  // namespace vorx::lanes
