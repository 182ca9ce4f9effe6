// The closed-form determinants of the fixed sizes, shared by the x87 kernels and the
// exported code of the other layouts; the arithmetic is a policy `A` (its value type
// V, mul, add, sub, and `narrow`, which can send a minor through a 32-bit temporary).
//
// Orders 4 to 6 expand by minors of the bottom rows. M(r, C) is the minor of rows
// r..N-1 on the ascending column set C; each one is computed once, bottom up, and
// reused by every larger minor that needs it:
//   order 2   M = a[r][c0]*a[r+1][c1] - a[r][c1]*a[r+1][c0]
//   above     M(r, C) = a[r][c0]*M(r+1, C-c0) - a[r][c1]*M(r+1, C-c1) + ...
//   top       det = M(1, C-c0)*a[0][c0] - M(1, C-c1)*a[0][c1] + ...
// every sum strictly left to right. No branch, no division.
#pragma once

#include <type_traits>
#include <utility>

#include "../frame/sse.h"
#include "../frame/x87.h"

namespace vorx::det {

// Column sets are bit masks.
constexpr int columns(unsigned set) { return __builtin_popcount(set); }
constexpr int nthColumn(unsigned set, int t)
{
    for (int c = 0;; ++c)
        if ((set >> c & 1) && t-- == 0) return c;
}
constexpr unsigned without(unsigned set, int c) { return set & ~(1u << c); }

// Calls f with each of 0..n-1 as a constant, in order.
template <class F, unsigned... I>
[[gnu::always_inline]] inline void each(std::integer_sequence<unsigned, I...>, F f)
{
    (f(std::integral_constant<unsigned, I>{}), ...);
}
template <unsigned n, class F>
[[gnu::always_inline]] inline void upTo(F f) { each(std::make_integer_sequence<unsigned, n>{}, f); }

// The minors by column set: at register width, or, where the policy narrows them,
// in a 32-bit temporary that later products read from memory.
template <class A, int N>
struct Minors {
    using V = typename A::V;
    V wide[1u << N];
    float narrow[1u << N];
    template <unsigned set>
    [[gnu::always_inline]] void put(V v)
    {
        if constexpr (A::narrow(columns(set), set)) narrow[set] = roundToFloat(v);
        else wide[set] = v;
    }
    template <unsigned set>
    [[gnu::always_inline]] V get() const
    {
        if constexpr (A::narrow(columns(set), set)) return V(narrow[set]);
        else return wide[set];
    }
};

// One row of the expansion over `set`: element times minor, or at the top minor
// times element, with alternating subtraction and addition. `a(i, j)` reads an
// element of the object.
template <class A, int r, unsigned set, bool Top, class E, class M, class V = typename A::V>
[[gnu::always_inline]] inline V expandRow(const E& a, const M& m)
{
    V acc{};
    upTo<columns(set)>([&](auto t) __attribute__((always_inline)) {
        constexpr int c = nthColumn(set, t);
        const V minor = m.template get<without(set, c)>();
        const V term = Top ? A::mul(minor, V(a(r, c))) : A::mul(V(a(r, c)), minor);
        if constexpr (t == 0) acc = term;
        else if constexpr (t % 2) acc = A::sub(acc, term);
        else acc = A::add(acc, term);
    });
    return acc;
}

// Level by level from the bottom: every minor of order 2, then of order 3, ...
template <class A, int N, class E, class V = typename A::V>
[[gnu::always_inline]] inline V byMinors(const E& a)
{
    constexpr unsigned kSets = 1u << N;
    Minors<A, N> m;
    upTo<kSets>([&](auto s) __attribute__((always_inline)) {
        constexpr unsigned set = s;
        if constexpr (columns(set) == 2) {
            constexpr int c0 = nthColumn(set, 0), c1 = nthColumn(set, 1), r = N - 2;
            m.template put<set>(A::sub(A::mul(V(a(r, c0)), V(a(r + 1, c1))), A::mul(V(a(r, c1)), V(a(r + 1, c0)))));
        }
    });
    upTo<N - 3>([&](auto o) __attribute__((always_inline)) {
        constexpr int order = o + 3;
        upTo<kSets>([&](auto s) __attribute__((always_inline)) {
            constexpr unsigned set = s;
            if constexpr (columns(set) == order) m.template put<set>(expandRow<A, N - order, set, false>(a, m));
        });
    });
    return expandRow<A, 0, kSets - 1, true>(a, m);
}

// The 3x3 cofactors of row 0, each form adding its three terms in its own order.
template <class A, class V = typename A::V>
struct Cofactors3 {
    V A0, B0, C0;  // A = a11*a22 - a12*a21, B = a12*a20 - a10*a22, C = a10*a21 - a11*a20
    template <class E>
    [[gnu::always_inline]] explicit Cofactors3(const E& a)
        : A0(A::sub(A::mul(V(a(1, 1)), V(a(2, 2))), A::mul(V(a(1, 2)), V(a(2, 1))))),
          B0(A::sub(A::mul(V(a(1, 2)), V(a(2, 0))), A::mul(V(a(1, 0)), V(a(2, 2))))),
          C0(A::sub(A::mul(V(a(1, 0)), V(a(2, 1))), A::mul(V(a(1, 1)), V(a(2, 0)))))
    {
    }
};

// The code of the exported functions: (A*a00 + B*a01) + C*a02.
template <class A, class E, class V = typename A::V>
[[gnu::always_inline]] inline V rowExpansion3(const E& a)
{
    Cofactors3<A> c(a);
    return A::add(A::add(A::mul(c.A0, V(a(0, 0))), A::mul(c.B0, V(a(0, 1)))), A::mul(c.C0, V(a(0, 2))));
}

// Single precision, every operation rounded, products and sums in the order written.
// `narrow(order, set)`: whether that minor goes through a 32-bit temporary.
struct Single {
    using V = float;
    static V mul(V a, V b) { return sse::mul(a, b); }
    static V add(V a, V b) { return sse::add(a, b); }
    static V sub(V a, V b) { return a - b; }
    static constexpr bool narrow(int, unsigned) { return false; }
};

// The x87 unit at register width; `Narrow::at(order, set)` names the minors that go
// through a 32-bit temporary (none by default).
struct NoNarrowing {
    static constexpr bool at(int, unsigned) { return false; }
};
template <class Narrow = NoNarrowing>
struct X87 {
    using V = long double;
    static V mul(V a, V b) { return a * b; }
    static V add(V a, V b) { return a + b; }
    static V sub(V a, V b) { return a - b; }
    static constexpr bool narrow(int order, unsigned set) { return Narrow::at(order, set); }
};

// The arithmetic of the code outside the kernels: single precision in 32f, the x87
// unit in 64f.
template <class T>
using OwnArith = std::conditional_t<sizeof(T) == 4, Single, X87<>>;

// Element (i, j) of object k of a view, read where it is used.
template <class S>
struct Elements {
    const S& s;
    uint32_t k;
    [[gnu::always_inline]] auto operator()(uint32_t i, uint32_t j) const { return *s.at(k, i, j); }
};
template <class S>
Elements(const S&, uint32_t) -> Elements<S>;

}  // namespace vorx::det
