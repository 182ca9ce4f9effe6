// The packed 32f inverses of the layouts none and L, whose elements lie 4 bytes apart
// along each row. Their singularity test is d == 0.0 alone, and their reciprocal the
// approximate reciprocal instruction with one Newton step:
//   3x3  r = (r0 + r0) - (d*r0)*r0
//   4x4  r = (r0 + r0) - d*(r0*r0), also for the pivots of 5x5 and 6x6.
// Lane comments list lanes 0..3.
#pragma once

#include "frame/sse.h"
#include "invert/closed.h"

namespace vorx::inv::packed {

using sse::R;

template <int a, int b, int c, int d>
inline R shuffle(R x) { return _mm_shuffle_ps(x, x, _MM_SHUFFLE(d, c, b, a)); }
inline R E(R x) { return shuffle<1, 0, 3, 2>(x); }  // adjacent lanes exchanged
inline R H(R x) { return shuffle<2, 3, 0, 1>(x); }  // halves exchanged
inline R sub(R a, R b) { return _mm_sub_ps(a, b); }
using sse::add;
using sse::mul;

inline R newton3(R d)
{
    R r0 = _mm_rcp_ss(d);
    return _mm_sub_ss(sse::add1(r0, r0), sse::mul1(sse::mul1(d, r0), r0));
}
inline R newton4(R d)
{
    R r0 = _mm_rcp_ss(d);
    return _mm_sub_ss(sse::add1(r0, r0), sse::mul1(d, sse::mul1(r0, r0)));
}
// An ordered test: a NaN determinant is not zero (the comiss intrinsic would say it is).
inline bool isZero(R d) { return _mm_cvtss_f32(d) == 0.0f; }
inline R lane0(R x) { return shuffle<0, 0, 0, 0>(x); }

// Three elements by a 64-bit and a 32-bit load.                lanes: p0, p1, p2, 0
inline R row3(const float* p) { return _mm_movelh_ps(sse::load2(p), sse::load1(p + 2)); }
inline void storeRow3(float* p, R v)
{
    sse::store2(p, v);
    sse::store1(p + 2, _mm_movehl_ps(v, v));
}

// The 3x3 closed form. The columns of the adjugate are cross products of rows, with
// every product in the order of the scalar form's numerators:
//   column 0 = r1.yzx*r2.zxy - r1.zxy*r2.yzx       (A, B, C)
//   column 1 = r0.zxy*r2.yzx - r0.yzx*r2.zxy
//   column 2 = r0.yzx*r1.zxy - r0.zxy*r1.yzx
// and d goes down the first column: (a10*n01 + a20*n02) + a00*A. The whole matrix is
// read before the first store, so dst may be src.
template <class Src, class Dst>
inline bool inverse3(const Src& src, const Dst& dst)
{
    auto yzx = [](R v) { return shuffle<1, 2, 0, 3>(v); };
    auto zxy = [](R v) { return shuffle<2, 0, 1, 3>(v); };
    const R r0 = row3(src(0)), r1 = row3(src(1)), r2 = row3(src(2));
    R c0 = sub(mul(yzx(r1), zxy(r2)), mul(zxy(r1), yzx(r2)));
    R c1 = sub(mul(zxy(r0), yzx(r2)), mul(yzx(r0), zxy(r2)));
    R c2 = sub(mul(yzx(r0), zxy(r1)), mul(zxy(r0), yzx(r1)));
    R d = sse::add1(sse::add1(sse::mul1(r1, c1), sse::mul1(r2, c2)), sse::mul1(r0, c0));
    if (isZero(d)) return false;
    const R r = lane0(newton3(d));
    c0 = mul(c0, r);
    c1 = mul(c1, r);
    c2 = mul(c2, r);
    R t0 = _mm_unpacklo_ps(c0, c1);  // c0[0], c1[0], c0[1], c1[1]
    R t1 = _mm_unpackhi_ps(c0, c1);  // c0[2], c1[2], c0[3], c1[3]
    storeRow3(dst(0), _mm_movelh_ps(t0, c2));                           // c0[0], c1[0], c2[0], c2[1]
    storeRow3(dst(1), _mm_shuffle_ps(t0, c2, _MM_SHUFFLE(3, 1, 3, 2)));  // c0[1], c1[1], c2[1], c2[3]
    storeRow3(dst(2), _mm_shuffle_ps(t1, c2, _MM_SHUFFLE(3, 2, 1, 0)));  // c0[2], c1[2], c2[2], c2[3]
    return true;
}

// The 4x4 closed form on the source transposed into lanes, the halves of two
// columns exchanged:
//   C0 = a00 a10 a20 a30   C1 = a21 a31 a01 a11   C2 = a02 a12 a22 a32   C3 = a23 a33 a03 a13
// The rows M0..M3 of the adjugate grow in six rounds of one vector t each, the order
// of every product and sum fixing the last bits; d = (P3 + P1) + (P2 + P0) with
// P = C0*M0. Nothing is stored: `rows` receives M0..M3 times r, or nothing when d is 0.
template <class Row, class Rows>
[[gnu::always_inline]] inline bool inverse4(const Row& src, Rows rows)
{
    auto pairs = [](const float* a, const float* b) { return _mm_loadh_pi(sse::load2(a), sse::half(b)); };
    const R a01 = pairs(src(0), src(1)), a23 = pairs(src(2), src(3));          // a00 a01 a10 a11, a20 a21 a30 a31
    const R b01 = pairs(src(0) + 2, src(1) + 2), b23 = pairs(src(2) + 2, src(3) + 2);  // a02 a03 a12 a13, ...
    const R C0 = _mm_shuffle_ps(a01, a23, 0x88), C1 = _mm_shuffle_ps(a23, a01, 0xDD);
    const R C2 = _mm_shuffle_ps(b01, b23, 0x88), C3 = _mm_shuffle_ps(b23, b01, 0xDD);
    R t, M0, M1, M2, M3;
    t = E(mul(C2, C3));
    M0 = sub(mul(C1, H(t)), mul(C1, t));
    M1 = H(sub(mul(C0, H(t)), mul(C0, t)));
    t = E(mul(C1, C2));
    M0 = sub(add(mul(C3, t), M0), mul(C3, H(t)));
    M3 = H(sub(mul(C0, H(t)), mul(C0, t)));
    t = E(mul(H(C1), C3));
    const R D = H(C2);
    M0 = sub(add(mul(D, t), M0), mul(D, H(t)));
    M2 = H(sub(mul(C0, H(t)), mul(C0, t)));
    t = E(mul(C0, C1));
    M2 = sub(mul(C3, H(t)), add(mul(C3, t), M2));
    M3 = sub(sub(mul(D, t), M3), mul(D, H(t)));
    t = E(mul(C0, C3));
    M1 = add(mul(D, H(t)), sub(M1, mul(D, t)));
    M2 = sub(add(mul(C1, t), M2), mul(C1, H(t)));
    t = E(mul(C0, D));
    M1 = sub(add(mul(C3, t), M1), mul(C3, H(t)));
    M3 = add(mul(C1, H(t)), sub(M3, mul(C1, t)));
    const R P = mul(C0, M0);
    const R s = add(H(P), P);  // P2+P0, P3+P1, ...
    const R d = sse::add1(E(s), s);
    if (isZero(d)) return false;
    const R r = lane0(newton4(d));
    rows(mul(M0, r), mul(M1, r), mul(M2, r), mul(M3, r));
    return true;
}

// 5x5 and 6x6: pivot columns, one elimination step each, down to the 4x4 form.
//
// A step on an n x n matrix (rows of floats) takes a pivot column c from row 0 and
// exchanges it with column 0 (A'). With p = A'[0][0], r its reciprocal, u = A'[0][j]*r
// and S[i-1][j-1] = A'[i][j] - A'[i][0]*u[j], the inverse of S gives the rest:
//   row 0     corner = r + (u . y),   rest = 0 - w,  w[j] = sum_k u[k]*X[k][j]
//   column 0  0 - y,  y[i] = sum_k X[i][k]*v[k],  v = A'[i][0]*r
// (every sum in ascending order from its first product), and row t of that inverse
// goes to row c for t = 0, row 0 for t = c, row t otherwise: the exchange undone.
//
// The pivot: a00 if it lies outside the band, else the element of largest
// magnitude in row 0 (the first of equal maxima, never a NaN), which must itself lie
// outside the band. A NaN a00 is outside for 5x5 (insideBand), inside for 6x6
// (notOutsideBand). A failing pivot writes nothing. The Schur complement that the
// 4x4 form inverts is stored first in the bottom right 4x4 block of dst, whence the
// 4x4 form reads it: when that last stage fails, dst holds it there and is otherwise
// untouched.
template <int N>
using Rows = float[N][N];

template <int n, class Test>
inline int pivotColumn(const Rows<n>& a)
{
    if (!Test::fails(a[0][0])) return 0;
    int best = -1;
    float top = -1;
    for (int j = 0; j < n; ++j)
        if (__builtin_fabsf(a[0][j]) > top) top = __builtin_fabsf(a[0][j]), best = j;
    if (best < 0 || InsideBand<float>::fails(a[0][best])) return -1;
    return best;
}

inline float sub(float a, float b) { return a - b; }

template <int n>
struct Step {
    int c;
    float r, u[n], v[n];
    // Reduces `a` (columns 0 and c exchanged) to its Schur complement s.
    void reduce(Rows<n>& a, Rows<n - 1>& s)
    {
#pragma GCC unroll 6
        for (int i = 0; i < n; ++i) {
            float t = a[i][0];
            a[i][0] = a[i][c];
            a[i][c] = t;
        }
        r = _mm_cvtss_f32(newton4(_mm_set_ss(a[0][0])));
#pragma GCC unroll 6
        for (int j = 1; j < n; ++j) u[j] = sse::mul(a[0][j], r);
#pragma GCC unroll 6
        for (int i = 1; i < n; ++i) {
            v[i] = sse::mul(a[i][0], r);
#pragma GCC unroll 6
            for (int j = 1; j < n; ++j) s[i - 1][j - 1] = sub(a[i][j], sse::mul(a[i][0], u[j]));
        }
    }
    // The inverse of the step's matrix from the inverse x of its Schur complement.
    void assemble(const Rows<n - 1>& x, Rows<n>& out) const
    {
        float y[n];
        auto row = [&](int t) { return t == 0 ? c : t == c ? 0 : t; };
#pragma GCC unroll 6
        for (int i = 1; i < n; ++i) {
            float acc = sse::mul(x[i - 1][0], v[1]);
#pragma GCC unroll 6
            for (int k = 2; k < n; ++k) acc = sse::add(acc, sse::mul(x[i - 1][k - 1], v[k]));
            y[i] = acc;
            out[row(i)][0] = sub(0.0f, acc);
#pragma GCC unroll 6
            for (int j = 1; j < n; ++j) out[row(i)][j] = x[i - 1][j - 1];
        }
#pragma GCC unroll 6
        for (int j = 1; j < n; ++j) {
            float acc = sse::mul(u[1], x[0][j - 1]);
#pragma GCC unroll 6
            for (int k = 2; k < n; ++k) acc = sse::add(acc, sse::mul(u[k], x[k - 1][j - 1]));
            out[row(0)][j] = sub(0.0f, acc);
        }
        float t = sse::mul(u[1], y[1]);
#pragma GCC unroll 6
        for (int k = 2; k < n; ++k) t = sse::add(t, sse::mul(u[k], y[k]));
        out[row(0)][0] = sse::add(r, t);
    }
};

// The 5x5 (one step) and 6x6 (two steps) forms; `src(i)`, `dst(i)` point to row i.
template <int N, class Src, class Dst>
bool inversePivoted(const Src& src, const Dst& dst)
{
    using First = std::conditional_t<N == 5, InsideBand<float>, NotOutsideBand<float>>;
    Rows<N> a, out;
#pragma GCC unroll 6
    for (int i = 0; i < N; ++i)
#pragma GCC unroll 6
        for (int j = 0; j < N; ++j) a[i][j] = src(i)[j];
    // The last step: its Schur complement through dst's bottom right block into the
    // 4x4 form, whose rows come back for the assembly.
    auto last = [&](auto& step, auto& m, auto& x) {
        Rows<4> s, x4;
        step.reduce(m, s);
        auto block = [&](int i) { return dst(N - 4 + i) + (N - 4); };
#pragma GCC unroll 4
        for (int i = 0; i < 4; ++i) sse::store4u(block(i), sse::load4u(s[i]));
        if (!inverse4([&](int i) { return static_cast<const float*>(block(i)); }, [&](R m0, R m1, R m2, R m3) {
                sse::store4u(x4[0], m0);
                sse::store4u(x4[1], m1);
                sse::store4u(x4[2], m2);
                sse::store4u(x4[3], m3);
            }))
            return false;
        step.assemble(x4, x);
        return true;
    };
    Step<N> outer;
    if ((outer.c = pivotColumn<N, First>(a)) < 0) return false;
    if constexpr (N == 5) {
        if (!last(outer, a, out)) return false;
    } else {
        Rows<5> s1, x1;
        Step<5> inner;
        outer.reduce(a, s1);
        if ((inner.c = pivotColumn<5, First>(s1)) < 0) return false;
        if (!last(inner, s1, x1)) return false;
        outer.assemble(x1, out);
    }
#pragma GCC unroll 6
    for (int i = 0; i < N; ++i)
#pragma GCC unroll 6
        for (int j = 0; j < N; ++j) dst(i)[j] = out[i][j];
    return true;
}

}  // namespace vorx::inv::packed
