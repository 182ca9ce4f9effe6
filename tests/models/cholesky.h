// The references of the Cholesky families, for their model and the tests of single
// behaviours: the row-by-row factorisation into the factor form (L below the
// diagonal, 1/L[i][i] on it) and the two substitutions, in the library's order and
// roundings.
#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "fixture.h"

namespace vt {

// How a member takes 1/√d and tests its pivots, by the one-matrix function that
// does the work (Contiguous, Strided or Pointer) and the order.
struct CholRule {
    bool sseRoot = false;  // 32f Pointer: single-precision root, then quotient
    bool lenientFirst = false, lenientLast = false;  // pivots that let a NaN pass
    bool carry = false;  // the current row of L and the newest reciprocal kept wide
};

template <class T>
CholRule cholRule(Lay body, uint32_t n)
{
    CholRule r;
    r.sseRoot = sizeof(T) == 4 && body == Lay::P;
    // The 64f closed forms (orders 3 to 6, Contiguous and Strided).
    if (sizeof(T) == 8 && body != Lay::P && n >= 3 && n <= 6) {
        r.lenientFirst = r.carry = true;
        r.lenientLast = n == 4 || (n == 3 && body == Lay::C);
    }
    return r;
}

template <class T>
using CholAcc = std::conditional_t<sizeof(T) == 4, float, long double>;

// t - u·v and t·r, each operation rounded to single in 32f; at register width in
// 64f, rounded only when stored.
template <class T>
CholAcc<T> cholMinus(CholAcc<T> t, CholAcc<T> u, CholAcc<T> v)
{
    if constexpr (sizeof(T) == 4) return f32::sub(t, f32::mul(u, v));
    else return t - u * v;
}
template <class T>
CholAcc<T> cholTimes(CholAcc<T> t, CholAcc<T> r)
{
    if constexpr (sizeof(T) == 4) return f32::mul(t, r);
    else return t * r;
}
template <class T>
T cholStored(CholAcc<T> v)
{
    if constexpr (sizeof(T) == 4) return v;
    else return roundToDouble(v);
}

// Factorises the S x S row-major matrix a into d, which holds dst's object as it
// stands; only what the library writes is written. Returns the row whose pivot
// fails, or -1.
template <class T>
int cholFactor(const std::vector<T>& a, std::vector<T>& d, uint32_t S, CholRule rule)
{
    std::vector<CholAcc<T>> row(S);
    CholAcc<T> recip = 0;
    auto mine = [&](uint32_t i, uint32_t k) { return rule.carry ? row[k] : d[i * S + k]; };
    for (uint32_t i = 0; i < S; ++i) {
        for (uint32_t j = 0; j < i; ++j) {
            CholAcc<T> t = a[i * S + j];
            for (uint32_t k = 0; k < j; ++k) t = cholMinus<T>(t, mine(i, k), d[j * S + k]);
            row[j] = cholTimes<T>(t, rule.carry && j + 1 == i ? recip : d[j * S + j]);
            d[i * S + j] = cholStored<T>(row[j]);
        }
        CholAcc<T> p = a[i * S + i];
        for (uint32_t k = 0; k < i; ++k) p = cholMinus<T>(p, mine(i, k), mine(i, k));
        bool lenient = (i == 0 && rule.lenientFirst) || (i == S - 1 && rule.lenientLast);
        if (lenient ? p <= 0 : !(p > 0)) return static_cast<int>(i);
        if constexpr (sizeof(T) == 4) {
            volatile float root = std::sqrt(p);
            volatile float wide = static_cast<float>(1.0L / std::sqrt(static_cast<long double>(p)));
            d[i * S + i] = recip = rule.sseRoot ? f32::div(1.0f, root) : wide;
        } else {
            recip = 1.0L / std::sqrt(p);
            d[i * S + i] = roundToDouble(recip);
        }
    }
    return -1;
}

// Solves L·Lᵀ·x = b from the factor form; `a(r, c)` reads it. b and x may be the
// same array.
template <class T, class A>
void cholSolve(A a, const T* b, T* x, uint32_t S)
{
    for (uint32_t i = 0; i < S; ++i) {
        CholAcc<T> t = b[i];
        for (uint32_t k = 0; k < i; ++k) t = cholMinus<T>(t, a(i, k), x[k]);
        x[i] = cholStored<T>(cholTimes<T>(t, a(i, i)));
    }
    for (uint32_t i = S; i-- > 0;) {
        CholAcc<T> t = x[i];
        for (uint32_t k = S - 1; k > i; --k) t = cholMinus<T>(t, a(k, i), x[k]);
        x[i] = cholStored<T>(cholTimes<T>(t, a(i, i)));
    }
}

}  // namespace vt
