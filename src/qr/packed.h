// The 32f decomposition of fixed order N, in every layout: the matrix is held in SSE
// registers (rows moved whole where their elements lie 4 bytes apart, element by
// element elsewhere), a row in one
// register (order 3: lanes e0, 0, e1, e2 as load3 gives them; order 4: e0..e3) or
// two (orders 5, 6: columns 0..3, then 4 and 5 from lane 0). Every lane does what
// the scalar loops do for its column, in the same order, so the results are the
// same bits:
//   - the sum of squares of column K runs down the rows in that column's lane;
//   - r, w and beta are scalars (w from p broadcast, p = dst[i][K] r in all lanes);
//   - t of every column at once: row K plus each row times its p, times beta;
//   - each row plus its p times t (row K plus t: scratch[K] is 1.0 and t a quiet
//     result, so 1.0 t is t).
// Lanes left of column K are not kept: below the diagonal they hold what further
// reflections make of columns already done, and the stores put the tails there
// instead, as the scalar loops do at the end of each step.
#pragma once

#include "qr.h"

namespace vorx {
namespace qr {
namespace packed {

using sse::R;

template <int N>
struct Rows {
    static constexpr int halves = N > 4 ? 2 : 1;
    R r[N][halves];
    float tail[N][N];  // tail[i][k]: element i of the reflector of step k
};

// The register and lane of column j.
constexpr int half(int j) { return j < 4 ? 0 : 1; }
template <int N>
constexpr int lane(int j) { return N == 3 ? (j == 0 ? 0 : j + 1) : j % 4; }

template <int L>
inline R splat(R v) { return _mm_shuffle_ps(v, v, _MM_SHUFFLE(L, L, L, L)); }
template <int L>
inline float get(R v)
{
    if constexpr (L == 0) return _mm_cvtss_f32(v);
    else return _mm_cvtss_f32(splat<L>(v));
}

// Row i of an object into its registers and back: moved whole where the row's
// elements lie 4 bytes apart, element by element in the other layouts.
template <int N, class O>
[[gnu::always_inline]] inline void load(Rows<N>& m, int i, const O& o, bool adjacent)
{
    if (adjacent) {
        const float* p = o.at(i, 0);
        m.r[i][0] = N == 3 ? sse::load3(p) : sse::load4u(p);
        if constexpr (N == 5) m.r[i][1] = sse::load1(p + 4);
        if constexpr (N == 6) m.r[i][1] = sse::load2(p + 4);
        return;
    }
    auto e = [&](int j) { return *o.at(i, j); };
    m.r[i][0] = N == 3 ? _mm_setr_ps(e(0), 0.0f, e(1), e(2)) : _mm_setr_ps(e(0), e(1), e(2), e(3));
    if constexpr (N == 5) m.r[i][1] = _mm_set_ss(e(4));
    if constexpr (N == 6) m.r[i][1] = _mm_setr_ps(e(4), e(5), 0.0f, 0.0f);
}
template <int J, int N, class O>
[[gnu::always_inline]] inline void put(const Rows<N>& m, int i, const O& o)
{
    if constexpr (J < N) {
        *o.at(i, J) = get<lane<N>(J)>(m.r[i][half(J)]);
        put<J + 1>(m, i, o);
    }
}
template <int N, class O>
[[gnu::always_inline]] inline void store(const Rows<N>& m, int i, const O& o, bool adjacent)
{
    if (!adjacent) return put<0>(m, i, o);
    float* p = o.at(i, 0);
    if constexpr (N == 3) sse::store3(p, m.r[i][0]);
    else sse::store4u(p, m.r[i][0]);
    if constexpr (N == 5) sse::store1(p + 4, m.r[i][1]);
    if constexpr (N == 6) sse::store2(p + 4, m.r[i][1]);
}

// What dst and scratch hold after steps 0 to K - 1: the rows, the tails of those
// steps over what the registers hold below the diagonal, and in scratch what the
// last of those steps wrote there (1.0 up to index K - 1, then its tail). Scratch
// has no reader during the call, so it is written here, once.
template <bool Adjacent, int N, class D>
[[gnu::always_inline]] inline void finish(const Rows<N>& m, int K, float* scratch, const D& dst)
{
#pragma GCC unroll 6
    for (int i = 0; i < N; ++i) store(m, i, dst, Adjacent);
    for (int k = 0; k < K; ++k)
        for (int i = k + 1; i < N; ++i) *dst.at(i, k) = m.tail[i][k];
    if (K == 0) return;
    for (int k = 0; k < K; ++k) scratch[k] = 1.0f;
    for (int i = K; i < N; ++i) scratch[i] = m.tail[i][K - 1];
}

// Steps K and on of O objects side by side, each phase of a step object after
// object, so that the processor has the independent work of the other object
// beside each one's long chain of dependent operations (the root on the x87 unit
// above all). Returns the first step whose column cannot be reflected in one of
// them, or N - 1.
template <int N, int K, int O>
[[gnu::always_inline]] inline int steps(Rows<N>* m)
{
    if constexpr (K == N - 1) {
        return K;
    } else {
        using A = Arith<float>;
        constexpr int H = half(K), L = lane<N>(K), h0 = K < 4 ? 0 : 1;
        float sum[O];
        R r[O], p[O][N], w[O], beta[O];
#pragma GCC unroll 4
        for (int o = 0; o < O; ++o) {
            // The first square begins the sum: 0 + x*x is x*x (never -0, a NaN quiet).
            R s = sse::mul(m[o].r[K][H], m[o].r[K][H]);
#pragma GCC unroll 6
            for (int i = K + 1; i < N; ++i) s = sse::add(s, sse::mul(m[o].r[i][H], m[o].r[i][H]));
            sum[o] = get<L>(s);
        }
#pragma GCC unroll 4
        for (int o = 0; o < O; ++o)
            if (!A::passes(sum[o])) return K;
#pragma GCC unroll 4
        for (int o = 0; o < O; ++o) r[o] = sse::broadcast(1.0f / A::away(get<L>(m[o].r[K][H]), A::root(sum[o])));
#pragma GCC unroll 4
        for (int o = 0; o < O; ++o) {
            w[o] = sse::broadcast(1.0f);
#pragma GCC unroll 6
            for (int i = K + 1; i < N; ++i) {
                p[o][i] = splat<L>(sse::mul(m[o].r[i][H], r[o]));
                m[o].tail[i][K] = _mm_cvtss_f32(p[o][i]);
                w[o] = sse::add(w[o], sse::mul(p[o][i], p[o][i]));
            }
            beta[o] = sse::broadcast(-2.0f / _mm_cvtss_f32(w[o]));
        }
#pragma GCC unroll 4
        for (int o = 0; o < O; ++o)
#pragma GCC unroll 2
            for (int h = h0; h < Rows<N>::halves; ++h) {
                R t = m[o].r[K][h];
#pragma GCC unroll 6
                for (int i = K + 1; i < N; ++i) t = sse::add(t, sse::mul(m[o].r[i][h], p[o][i]));
                t = sse::mul(t, beta[o]);
                m[o].r[K][h] = sse::add(m[o].r[K][h], t);
#pragma GCC unroll 6
                for (int i = K + 1; i < N; ++i) m[o].r[i][h] = sse::add(m[o].r[i][h], sse::mul(p[o][i], t));
            }
        return steps<N, K + 1, O>(m);
    }
}

// One object; a failing step leaves the steps before it in dst.
template <int N, bool Adjacent, class S, class D>
[[gnu::always_inline]] inline vorxStatus factorise(const S& src, float* scratch, const D& dst)
{
    Rows<N> m[1];
#pragma GCC unroll 6
    for (int i = 0; i < N; ++i) load(m[0], i, src, Adjacent);
    int k = steps<N, 0, 1>(m);
    finish<Adjacent>(m[0], k, scratch, dst);
    return k == N - 1 ? kOk : kZeroDivide;
}

// O objects at once, stored only when all succeed: false leaves dst and scratch
// untouched, for the caller to take the objects one by one. Nothing of them is
// stored before all are read, so objects must not share memory across the group
// (dst on its own src is fine).
template <int N, int O, bool Adjacent, class S, class D>
[[gnu::always_inline]] inline bool factoriseGroup(const S* src, float* scratch, const D* dst)
{
    Rows<N> m[O];
#pragma GCC unroll 4
    for (int o = 0; o < O; ++o)
#pragma GCC unroll 6
        for (int i = 0; i < N; ++i) load(m[o], i, src[o], Adjacent);
    if (steps<N, 0, O>(m) != N - 1) return false;
#pragma GCC unroll 4
    for (int o = 0; o < O; ++o) finish<Adjacent>(m[o], N - 1, scratch, dst[o]);
    return true;
}

}  // namespace packed
}  // namespace qr
}  // namespace vorx
