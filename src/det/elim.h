// Gaussian elimination with partial pivoting for a determinant of any order, in a
// caller's work buffer. The any-size determinant runs it once per object; the
// any-size inverse runs it for the determinant and again for every cofactor.
//
// The working copy holds its rows `stride` elements apart and never moves them: the
// exchanges live in `perm`, each one flipping the sign. 32f: every operation in SSE
// single precision. 64f: on the x87 unit, the negated multiplier at register width,
// every element rounded to double by its store.
#pragma once

#include "../frame/elements.h"
#include "../frame/sse.h"
#include "../frame/x87.h"

namespace vorx::elim {

// Held as doubles. A pivot must reach its threshold (>=), the last pivot must pass it
// (>): a last pivot exactly at the threshold counts as too small, an earlier one not.
template <class T>
constexpr double kThreshold = sizeof(T) == 4 ? 0x1p-23 : 0x1p-52;

// Exact magnitudes; a NaN never compares true.
inline float mag(float x) { return __builtin_fabsf(x); }
inline long double mag(double x) { return __builtin_fabsl(wide(x)); }
template <class T>
inline bool pivotPasses(T p) { return mag(p) >= kThreshold<T>; }
template <class T>
inline bool lastPasses(T p) { return mag(p) > kThreshold<T>; }

// The largest magnitude so far of the pivot search. In 64f it is rounded to single
// precision each time it is set while the candidates stay at full width, so a later
// candidate equal to it in double precision can win, and beyond the single range it
// is infinite and nothing beats it.
inline float searchBest(float m) { return m; }
inline float searchBest(long double m) { return roundToFloat(m); }

// The width values are carried at: single in 32f, the x87 register in 64f.
template <class T>
using Wide = decltype(mag(T()));
inline float times(float a, float b) { return sse::mul(a, b); }
inline long double times(long double a, long double b) { return a * b; }

// One row update of step k: q = -(a[r][k] / p), then a[r][j] = a[pk][j] * q + a[r][j].
// 32f forms q as 0.0 - m; 64f changes the sign of the unrounded quotient.
inline float negQuotient(float x, float p) { return 0.0f - x / p; }
inline long double negQuotient(double x, double p) { return -(wide(x) / wide(p)); }
inline void update(float& e, float u, float q) { e = sse::add(sse::mul(u, q), e); }
inline void update(double& e, double u, long double q) { e = roundToDouble(wide(u) * q + wide(e)); }

// The running product of the pivots: p * running after each step, and at the end
// running * (last * sign), the sign turned into the element type first.
template <class T>
struct Running {
    using W = Wide<T>;
    W v = 1;
    void step(T p) { v = times(W(p), v); }
    W with(T last, int sign) const { return times(v, times(W(last), W(sign))); }
};

template <class T>
struct Work {
    T* a;
    uint32_t* perm;
    uint32_t stride;
    T& at(uint32_t row, uint32_t j) const { return a[row * stride + j]; }
    T& at(uint32_t logical) const { return at(perm[logical], logical); }  // the diagonal through perm
};

// The caller's buffer: size*size elements, row stride size, then size indexes.
template <class T>
Work<T> workIn(T* scratch, uint32_t size)
{
    return {scratch, reinterpret_cast<uint32_t*>(scratch + size * size), size};
}

// Element (i, j) of object k of a view into row i of the working copy, bit for bit:
// a 64f value never passes through an x87 register, which would quieten a
// signalling NaN.
template <class T, class V>
inline void take(T& to, const V& v, uint32_t k, uint32_t i, uint32_t j)
{
    __builtin_memcpy(&to, v.at(k, i, j), sizeof(T));
}

// An object (see eachElement) whole into m, or m whole into an object, bit for bit.
// A 32f copy stays open to the compiler, which may keep elements in registers.
template <class T, int N, class O>
[[gnu::always_inline]] inline void takeObject(T (&m)[N][N], const O& o)
{
    eachElement<N>(o, N, N, [&](uint32_t i, uint32_t j, const T* p) {
        if constexpr (sizeof(T) == 4) __builtin_memcpy(&m[i][j], p, sizeof(T));
        else copyBits(&m[i][j], p);
    });
}
template <class T, int N, class O>
[[gnu::always_inline]] inline void giveObject(const O& o, const T (&m)[N][N])
{
    eachElement<N>(o, N, N, [&](uint32_t i, uint32_t j, T* p) { copyBits(p, &m[i][j]); });
}

// Steps 0 to m-2 of the elimination of order m. Each passed pivot goes to `run`;
// returns false at the first pivot below the threshold, its exchange made.
template <class T, class Run>
bool reduce(const Work<T>& w, uint32_t m, int& sign, Run& run)
{
    for (uint32_t k = 0; k + 1 < m; ++k) {
        // Strictly greater wins: the first of equal maxima, never a NaN.
        float best = searchBest(mag(w.at(k)));
        uint32_t arg = k;
        for (uint32_t i = k + 1; i < m; ++i) {
            auto c = mag(w.at(w.perm[i], k));
            if (c > best) {
                best = searchBest(c);
                arg = i;
            }
        }
        if (arg != k) {
            uint32_t t = w.perm[arg];
            w.perm[arg] = w.perm[k];
            w.perm[k] = t;
            sign = -sign;
        }
        const uint32_t pk = w.perm[k];
        const T p = w.at(pk, k);
        if (!pivotPasses(p)) return false;
        for (uint32_t i = k + 1; i < m; ++i) {
            const uint32_t r = w.perm[i];
            auto q = negQuotient(w.at(r, k), p);
            for (uint32_t j = k + 1; j < m; ++j) update(w.at(r, j), w.at(pk, j), q);
        }
        run.step(p);
    }
    return true;
}

}  // namespace vorx::elim
