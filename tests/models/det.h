// The references of the determinant and inversion families: the elimination of any
// order (the determinant of any size, and the inverse's determinant and cofactors),
// and the closed forms of the fixed-size determinants.
#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

#include "fixture.h"

namespace vt {

// One rounding to single, through memory.
inline float roundToFloat(long double x)
{
    volatile float f = static_cast<float>(x);
    return f;
}

// The values the elimination carries: single in 32f, the x87 register in 64f.
template <class T>
using ElimWide = std::conditional_t<sizeof(T) == 4, float, long double>;
inline float elimMul(float a, float b) { return f32::mul(a, b); }
inline long double elimMul(long double a, long double b) { return a * b; }

// A value carried wide, rounded to the element type through memory.
template <class T>
T stored(ElimWide<T> v)
{
    if constexpr (sizeof(T) == 4) return v;
    else return roundToDouble(v);
}

template <class T>
bool pivotPasses(T p) { return std::fabs(static_cast<long double>(p)) >= (sizeof(T) == 4 ? 0x1p-23L : 0x1p-52L); }
template <class T>
bool lastPasses(T p) { return std::fabs(static_cast<long double>(p)) > (sizeof(T) == 4 ? 0x1p-23L : 0x1p-52L); }

// Working rows with stride S, never moved, and perm.
template <class T>
struct Elimination {
    std::vector<T> a;
    std::vector<uint32_t> perm;
    uint32_t S;
    int sign = 1;
    explicit Elimination(uint32_t s) : a(s * s), perm(s), S(s)
    {
        for (uint32_t i = 0; i < s; ++i) perm[i] = i;
    }
    T& at(uint32_t r, uint32_t j) { return a[r * S + j]; }

    // Steps 0..m-2, each passed pivot to step(p); false at a failed pivot, its exchange made.
    template <class F>
    bool reduce(uint32_t m, F step)
    {
        for (uint32_t k = 0; k + 1 < m; ++k) {
            auto kept = [](T x) -> long double {
                long double v = std::fabs(static_cast<long double>(x));
                return sizeof(T) == 4 ? v : roundToFloat(v);  // 64f: the kept maximum narrowed
            };
            long double best = kept(at(perm[k], k));
            uint32_t arg = k;
            for (uint32_t i = k + 1; i < m; ++i) {
                long double c = std::fabs(static_cast<long double>(at(perm[i], k)));
                if (c > best) best = kept(at(perm[i], k)), arg = i;
            }
            if (arg != k) std::swap(perm[arg], perm[k]), sign = -sign;
            const uint32_t pk = perm[k];
            const T p = at(pk, k);
            if (!pivotPasses(p)) return false;
            for (uint32_t i = k + 1; i < m; ++i) {
                const uint32_t r = perm[i];
                if constexpr (sizeof(T) == 4) {
                    float q = f32::sub(0.0f, f32::div(at(r, k), p));
                    for (uint32_t j = k + 1; j < m; ++j) at(r, j) = f32::add(f32::mul(at(pk, j), q), at(r, j));
                } else {
                    long double q = -(static_cast<long double>(at(r, k)) / p);
                    for (uint32_t j = k + 1; j < m; ++j)
                        at(r, j) = roundToDouble(static_cast<long double>(at(pk, j)) * q + at(r, j));
                }
            }
            step(p);
        }
        return true;
    }
    T last(uint32_t m) { return at(perm[m - 1], m - 1); }
    // running * (last * sign)
    ElimWide<T> finish(ElimWide<T> running, uint32_t m)
    {
        return elimMul(running, elimMul(static_cast<ElimWide<T>>(last(m)), static_cast<ElimWide<T>>(sign)));
    }
};

// The determinant of any size as vorxDet gives it: the running product kept in dst,
// rounded at every step, and 0.0 for a pivot below its threshold.
template <class T>
T detAnySize(const std::vector<T>& src, uint32_t S)
{
    Elimination<T> w(S);
    w.a = src;
    T d = 1;
    ElimWide<T> running = 1;
    bool ok = w.reduce(S, [&](T p) {
        running = elimMul(static_cast<ElimWide<T>>(p), static_cast<ElimWide<T>>(d));
        d = stored<T>(running);
    });
    if (!ok || !lastPasses(w.last(S))) return 0;
    return stored<T>(w.finish(running, S));
}

// ---------------------------------------------------------------------------
// Fixed sizes

// The arithmetic of a closed form: single precision, or the x87 register with the
// minors of `narrow(order, set)` rounded to single.
struct DetArith {
    bool single = false;
    bool (*narrow)(int order, unsigned set) = nullptr;
    long double mul(long double a, long double b) const { return single ? f32::mul(float(a), float(b)) : a * b; }
    long double add(long double a, long double b) const { return single ? f32::add(float(a), float(b)) : a + b; }
    long double sub(long double a, long double b) const { return single ? f32::sub(float(a), float(b)) : a - b; }
    long double keep(int order, unsigned set, long double v) const
    {
        return narrow && narrow(order, set) ? roundToFloat(v) : v;
    }
};

// Expansion by the minors of the bottom rows (n = 4..6): element times minor, the
// top row minor times element, alternating signs, left to right.
inline long double detByMinors(const std::vector<long double>& a, unsigned n, const DetArith& ar)
{
    std::vector<long double> m(1u << n);
    auto at = [&](unsigned i, unsigned j) { return a[i * n + j]; };
    for (unsigned order = 2; order <= n; ++order) {
        unsigned r = n - order;
        for (unsigned set = 0; set < (1u << n); ++set) {
            if (static_cast<unsigned>(__builtin_popcount(set)) != order) continue;
            std::vector<unsigned> c;
            for (unsigned j = 0; j < n; ++j)
                if (set >> j & 1) c.push_back(j);
            long double v;
            if (order == 2) {
                v = ar.sub(ar.mul(at(r, c[0]), at(r + 1, c[1])), ar.mul(at(r, c[1]), at(r + 1, c[0])));
            } else {
                for (unsigned t = 0; t < order; ++t) {
                    long double minor = m[set & ~(1u << c[t])];
                    long double term = r == 0 ? ar.mul(minor, at(0, c[t])) : ar.mul(at(r, c[t]), minor);
                    v = t == 0 ? term : t % 2 ? ar.sub(v, term) : ar.add(v, term);
                }
            }
            m[set] = order == n ? v : ar.keep(static_cast<int>(order), set, v);
        }
    }
    return m[(1u << n) - 1];
}

// The 3x3 forms: cofactors A, B, C of row 0, and the order each form adds them in.
enum class Det3 { Row, KernelM32, KernelM64, KernelMa, KernelL };
inline long double det3(const std::vector<long double>& a, Det3 form, const DetArith& ar)
{
    auto x = [&](unsigned i, unsigned j) { return a[i * 3 + j]; };
    // x(i,j)*x(k,l) - x(p,q)*x(s,t)
    auto two = [&](unsigned i, unsigned j, unsigned k, unsigned l, unsigned p, unsigned q, unsigned s, unsigned t) {
        return ar.sub(ar.mul(x(i, j), x(k, l)), ar.mul(x(p, q), x(s, t)));
    };
    long double A = two(1, 1, 2, 2, 1, 2, 2, 1), B = two(1, 2, 2, 0, 1, 0, 2, 2), C = two(1, 0, 2, 1, 1, 1, 2, 0);
    auto term = [&](long double cof, unsigned j) { return ar.mul(cof, x(0, j)); };
    switch (form) {
    case Det3::Row: return ar.add(ar.add(term(A, 0), term(B, 1)), term(C, 2));
    case Det3::KernelM32: return ar.add(ar.add(term(B, 1), term(C, 2)), term(A, 0));
    case Det3::KernelM64:
        return ar.add(ar.add(ar.mul(two(0, 1, 1, 2, 0, 2, 1, 1), x(2, 0)), term(A, 0)),
                      ar.mul(two(0, 2, 2, 1, 0, 1, 2, 2), x(1, 0)));
    case Det3::KernelMa: return ar.add(ar.add(term(C, 2), term(A, 0)), term(B, 1));
    case Det3::KernelL: return ar.add(ar.add(term(C, 2), term(B, 1)), term(A, 0));
    }
    return 0;
}

}  // namespace vt
