// The references of the LU families, for their model and for the tests of single
// behaviours: the elimination through perm and the two substitutions.
#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

#include "fixture.h"

namespace vt {

// The threshold of the decomposition, 2^-23 for both types.
template <class T>
bool luPasses(T p) { return std::fabs(static_cast<long double>(p)) >= 0x1p-23L; }

// Factorises a dense row-major S x S matrix in place through perm. Returns the step
// whose pivot fails, or -1; the last pivot is left to the caller. `wideQ`: the 64f
// fixed sizes keep the negated multiplier unrounded.
template <class T>
int luFactor(std::vector<T>& d, uint32_t* perm, uint32_t S, bool wideQ)
{
    for (uint32_t i = 0; i < S; ++i) perm[i] = i;
    for (uint32_t k = 0; k + 1 < S; ++k) {
        long double best = std::fabs(static_cast<long double>(d[perm[k] * S + k]));
        uint32_t arg = k;
        for (uint32_t i = k + 1; i < S; ++i) {
            long double c = std::fabs(static_cast<long double>(d[perm[i] * S + k]));
            if (c > best) best = c, arg = i;
        }
        std::swap(perm[arg], perm[k]);
        uint32_t pk = perm[k];
        T p = d[pk * S + k];
        if (!luPasses(p)) return static_cast<int>(k);
        for (uint32_t i = k + 1; i < S; ++i) {
            uint32_t r = perm[i];
            if constexpr (sizeof(T) == 4) {
                float m = f32::div(d[r * S + k], p);
                d[r * S + k] = m;
                float q = f32::sub(0.0f, m);
                for (uint32_t j = k + 1; j < S; ++j) d[r * S + j] = f32::add(f32::mul(d[pk * S + j], q), d[r * S + j]);
            } else {
                long double m = static_cast<long double>(d[r * S + k]) / p;
                d[r * S + k] = roundToDouble(m);
                long double q = wideQ ? -m : -static_cast<long double>(d[r * S + k]);
                for (uint32_t j = k + 1; j < S; ++j)
                    d[r * S + j] = roundToDouble(static_cast<long double>(d[pk * S + j]) * q + d[r * S + j]);
            }
        }
    }
    return -1;
}
// Solves from the factors; `a(r, j)` reads them. b and x may be the same array: the
// right side is read where and when the library reads it.
template <class T, class A>
void luSolve(A a, const uint32_t* perm, const T* b, T* x, uint32_t S)
{
    using Acc = std::conditional_t<sizeof(T) == 4, float, long double>;
    auto add = [](Acc s, T u, T v) -> Acc {
        if constexpr (sizeof(T) == 4) return f32::add(s, f32::mul(u, v));
        else return s + static_cast<long double>(u) * v;
    };
    auto store = [](Acc v) { if constexpr (sizeof(T) == 4) return v; else return static_cast<T>(roundToDouble(v)); };
    auto minus = [](T u, Acc s) -> Acc { if constexpr (sizeof(T) == 4) return f32::sub(u, s); else return u - s; };
    auto over = [](Acc u, T p) -> Acc { if constexpr (sizeof(T) == 4) return f32::div(u, p); else return u / p; };
    x[0] = b[perm[0]];
    for (uint32_t i = 1; i < S; ++i) {
        Acc s = 0;
        for (uint32_t j = 0; j < i; ++j) s = add(s, a(perm[i], j), x[j]);
        x[i] = store(minus(b[perm[i]], s));
    }
    x[S - 1] = store(over(x[S - 1], a(perm[S - 1], S - 1)));
    for (uint32_t i = S - 1; i-- > 0;) {
        Acc s = 0;
        for (uint32_t j = i + 1; j < S; ++j) s = add(s, a(perm[i], j), x[j]);
        x[i] = store(over(minus(x[i], s), a(perm[i], i)));
    }
}

}  // namespace vt
