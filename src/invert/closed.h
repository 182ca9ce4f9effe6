// Fixed-size inversion outside the packed forms: the 3x3 and 4x4 closed forms and the
// 2+3 and 3+3 block partitions of 5x5 and 6x6, in the arithmetic policies of
// det/minors.h: 32f in single precision, every operation rounded (Single), or 64f on
// the x87 unit at register width, rounded to double by the store to dst (X87).
//
// Sources are read through `a(i, j)`, results go out through `put(i, j, v)` as they
// are computed; a band test that fails returns false before the first store.
#pragma once

#include "det/minors.h"
#include "det/elim.h"
#include "frame/elements.h"

namespace vorx::inv {

// The band of singularity, held as doubles: a determinant d fails when
// -band < d < band, both bounds excluded, tested on the signed value.
template <class T>
constexpr double kBand = sizeof(T) == 4 ? 1e-07 : 1e-15;

// The test is written in two ways, which part only on a NaN determinant:
//   insideBand      -band < d && d < band: a NaN is not inside, so it passes;
//   notOutsideBand  !(d <= -band || d >= band): a NaN is not outside, so it fails.
template <class T>
struct InsideBand {
    template <class V>
    static bool fails(V d) { return d > -kBand<T> && d < kBand<T>; }
};
template <class T>
struct NotOutsideBand {
    template <class V>
    static bool fails(V d) { return !(d <= -kBand<T> || d >= kBand<T>); }
};

// A result into dst: 64f rounded by a store that later reads of the element see (the
// scalar 4x4 reads its adjugate back from dst).
inline void storeTo(float* e, float v) { *e = v; }
inline void storeTo(double* e, long double v) { storeRounded(e, v); }

// One true division: single precision, or at register width on the x87 unit.
inline float recip(float d) { return 1.0f / d; }
inline long double recip(long double d) { return 1.0L / d; }

// x(i,j)*x(k,l) - x(m,n)*x(o,p)
template <class A, class X>
[[gnu::always_inline]] inline typename A::V two(const X& x, int i, int j, int k, int l, int m, int n, int o, int p)
{
    return A::sub(A::mul(x(i, j), x(k, l)), A::mul(x(m, n), x(o, p)));
}

// The 3x3 closed form: the cofactors A, B, C of row 0 first, d = (a00*A + a01*B) +
// a02*C, the test, then every element its numerator times the one reciprocal of d;
// no element is divided by d. Numerators after the test read the source afresh.
template <class A, class Test, class Src, class Put>
[[gnu::always_inline]] inline bool inverse3(const Src& src, Put put)
{
    using V = typename A::V;
    auto x = [&](int i, int j) { return V(src(i, j)); };
    det::Cofactors3<A> c(src);
    V d = A::add(A::add(A::mul(x(0, 0), c.A0), A::mul(x(0, 1), c.B0)), A::mul(x(0, 2), c.C0));
    if (Test::fails(d)) return false;
    const V r = recip(d);
    put(0, 0, A::mul(c.A0, r));
    put(0, 1, A::mul(two<A>(x, 0, 2, 2, 1, 0, 1, 2, 2), r));
    put(0, 2, A::mul(two<A>(x, 0, 1, 1, 2, 0, 2, 1, 1), r));
    put(1, 0, A::mul(c.B0, r));
    put(1, 1, A::mul(two<A>(x, 0, 0, 2, 2, 0, 2, 2, 0), r));
    put(1, 2, A::mul(two<A>(x, 0, 2, 1, 0, 0, 0, 1, 2), r));
    put(2, 0, A::mul(c.C0, r));
    put(2, 1, A::mul(two<A>(x, 0, 1, 2, 0, 0, 0, 2, 1), r));
    put(2, 2, A::mul(two<A>(x, 0, 0, 1, 1, 0, 1, 1, 0), r));
    return true;
}

// The 4x4 closed form. dst[i][j] is the cofactor of a[j][i]: with the rows r0 < r1 <
// r2 other than j and the columns c0 < c1 < c2 other than i, expanded down c0,
//   ((a[r1][c1]*a[r2][c2] - a[r2][c1]*a[r1][c2]) * a[r0][c0]
//  + (a[r2][c1]*a[r0][c2] - a[r2][c2]*a[r0][c1]) * a[r1][c0])
//  + (a[r0][c1]*a[r1][c2] - a[r1][c1]*a[r0][c2]) * a[r2][c0],
// each difference the other way round where i + j is odd. Every element goes to dst
// as it is computed; d is column 0 of the source against row 0 of dst as stored,
//   ((a10*dst01 + a20*dst02) + a30*dst03) + a00*dst00,
// and only after its test does a second pass scale dst by the reciprocal, so a
// failure leaves the unscaled adjugate. The adjugate goes out through `put` and is
// read back through `get`, the scaled elements go out through `out`: where dst is
// apart from the source, the adjugate may wait in a local copy and the caller move
// it to dst on a failure.
template <class A, class Test, class Src, class Put, class Get, class Out>
[[gnu::always_inline]] inline bool inverse4(const Src& src, Put put, Get get, Out out)
{
    using V = typename A::V;
    auto x = [&](int i, int j) { return V(src(i, j)); };
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i)
#pragma GCC unroll 4
        for (int j = 0; j < 4; ++j) {
            const int r0 = j == 0, r1 = r0 + 1 + (j == r0 + 1), r2 = r1 + 1 + (j == r1 + 1);
            const int c0 = i == 0, c1 = c0 + 1 + (i == c0 + 1), c2 = c1 + 1 + (i == c1 + 1);
            const bool odd = (i + j) & 1;
            auto diff = [&](V p, V q) { return odd ? A::sub(q, p) : A::sub(p, q); };
            V t0 = A::mul(diff(A::mul(x(r1, c1), x(r2, c2)), A::mul(x(r2, c1), x(r1, c2))), x(r0, c0));
            V t1 = A::mul(diff(A::mul(x(r2, c1), x(r0, c2)), A::mul(x(r2, c2), x(r0, c1))), x(r1, c0));
            V t2 = A::mul(diff(A::mul(x(r0, c1), x(r1, c2)), A::mul(x(r1, c1), x(r0, c2))), x(r2, c0));
            put(i, j, A::add(A::add(t0, t1), t2));
        }
    auto y = [&](int j) { return V(get(0, j)); };
    V d = A::add(A::add(A::add(A::mul(x(1, 0), y(1)), A::mul(x(2, 0), y(2))), A::mul(x(3, 0), y(3))),
                 A::mul(x(0, 0), y(0)));
    if (Test::fails(d)) return false;
    const V r = recip(d);
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i)
#pragma GCC unroll 4
        for (int j = 0; j < 4; ++j) out(i, j, A::mul(V(get(i, j)), r));
    return true;
}

// Small blocks at the policy's width.
template <class V, int R, int C>
using Block = V[R][C];

// x(0)*y(0) + x(1)*y(1) + ..., from the first product, in ascending order.
template <class A, int K, class V, class X, class Y>
[[gnu::always_inline]] inline V products(const X& x, const Y& y)
{
    V s = A::mul(x(0), y(0));
#pragma GCC unroll 3
    for (int k = 1; k < K; ++k) s = A::add(s, A::mul(x(k), y(k)));
    return s;
}

// The 2+3 (N = 5) and 3+3 (N = 6) partitions. A column table c starts as the
// identity; pivot searches (strictly larger wins, the first of equal maxima, never a
// NaN) move columns into its first places:
//   1. the largest |a[0][j]| over j = 1..4 into place 0;
//   2. the largest |2x2 determinant| of rows 0, 1 on columns c[0], c[t], t = 1..4,
//      into place 1;
//   3. (6x6) the largest |3x3 determinant| of rows 0..2 on c[0], c[1], c[t],
//      t = 2..4, into place 2.
// Column 5 of a 6x6 is never a candidate: a regular matrix whose only good pivot
// column is the last one fails. With b = N - 3, the permuted matrix is
// [[P, Q], [R, T]], P of b x b. P^-1 has the band test of `FirstTest` (the 2x2
// adjugate over one division, its off-diagonals from 0.0 - p; or the 3x3 closed
// form); Y = -P^-1 Q; the Schur complement S = T + R Y gets the 3x3 closed form with
// its band test; then
//   Z = -S^-1 (R P^-1),  top left P^-1 + Y Z,  top right Y S^-1,
// every product summed in ascending order from its first term. Row t of the
// partitioned inverse goes to row c[t] of dst: the exchange undone by addressing.
template <class A, class T, int N, class FirstTest, class Src, class Put>
bool partitioned(const Src& src, Put put)
{
    using V = typename A::V;
    constexpr int b = N - 3;
    auto x = [&](int i, int j) { return V(src(i, j)); };
    auto mag = [](V v) { return __builtin_fabsl(v); };
    int c[N];
#pragma GCC unroll 6
    for (int j = 0; j < N; ++j) c[j] = j;
    int best = 0;
    for (int j = 1; j < 5; ++j)
        if (elim::mag(src(0, j)) > elim::mag(src(0, best))) best = j;
    c[0] = best;
    c[best] = 0;
    auto exchange = [&](int place, auto value) {
        int arg = place;
        V top = value(place);
        for (int t = place + 1; t < 5; ++t) {
            V v = value(t);
            if (mag(v) > mag(top)) top = v, arg = t;
        }
        int keep = c[place];
        c[place] = c[arg];
        c[arg] = keep;
    };
    exchange(1, [&](int t) { return two<A>(x, 0, c[0], 1, c[t], 0, c[t], 1, c[0]); });
    if constexpr (b == 3)
        exchange(2, [&](int t) {
            const int cols[3] = {c[0], c[1], c[t]};
            return det::rowExpansion3<A>([&](int i, int j) { return src(i, cols[j]); });
        });
    auto a = [&](int i, int j) { return x(i, c[j]); };  // the permuted matrix
    Block<V, b, b> pinv;
    if constexpr (b == 2) {
        V d = two<A>(a, 0, 0, 1, 1, 1, 0, 0, 1);
        if (FirstTest::fails(d)) return false;
        const V r = recip(d);
        pinv[0][0] = A::mul(a(1, 1), r);
        pinv[0][1] = A::mul(A::sub(V(0), a(0, 1)), r);
        pinv[1][0] = A::mul(A::sub(V(0), a(1, 0)), r);
        pinv[1][1] = A::mul(a(0, 0), r);
    } else {
        if (!inverse3<A, FirstTest>(a, [&](int i, int j, V v) { pinv[i][j] = v; })) return false;
    }
    Block<V, b, 3> y;
    Block<V, 3, 3> s, sinv;
#pragma GCC unroll 3
    for (int i = 0; i < b; ++i)
#pragma GCC unroll 3
        for (int j = 0; j < 3; ++j)
            y[i][j] = A::sub(V(0), products<A, b, V>([&](int k) { return pinv[i][k]; },
                                                     [&](int k) { return a(k, b + j); }));
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i)
#pragma GCC unroll 3
        for (int j = 0; j < 3; ++j) {
            V t = a(b + i, b + j);
#pragma GCC unroll 3
            for (int k = 0; k < b; ++k) t = A::add(t, A::mul(a(b + i, k), y[k][j]));
            s[i][j] = t;
        }
    if (!inverse3<A, InsideBand<T>>([&](int i, int j) { return s[i][j]; },
                                    [&](int i, int j, V v) { sinv[i][j] = v; }))
        return false;
    Block<V, 3, b> w, z;
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i)
#pragma GCC unroll 3
        for (int j = 0; j < b; ++j)
            w[i][j] = products<A, b, V>([&](int k) { return a(b + i, k); }, [&](int k) { return pinv[k][j]; });
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i)
#pragma GCC unroll 3
        for (int j = 0; j < b; ++j)
            z[i][j] = A::sub(V(0), products<A, 3, V>([&](int k) { return sinv[i][k]; }, [&](int k) { return w[k][j]; }));
#pragma GCC unroll 3
    for (int i = 0; i < b; ++i) {
#pragma GCC unroll 3
        for (int j = 0; j < b; ++j) {
            V t = pinv[i][j];
#pragma GCC unroll 3
            for (int k = 0; k < 3; ++k) t = A::add(t, A::mul(y[i][k], z[k][j]));
            put(c[i], j, t);
        }
#pragma GCC unroll 3
        for (int j = 0; j < 3; ++j)
            put(c[i], b + j, products<A, 3, V>([&](int k) { return y[i][k]; }, [&](int k) { return sinv[k][j]; }));
    }
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i) {
#pragma GCC unroll 3
        for (int j = 0; j < b; ++j) put(c[b + i], j, z[i][j]);
#pragma GCC unroll 3
        for (int j = 0; j < 3; ++j) put(c[b + i], b + j, sinv[i][j]);
    }
    return true;
}

}  // namespace vorx::inv
