// What the QR decomposition and the QR back substitution share: the arithmetic of
// each element type, and the elements of one object of an operand.
//
// A factor holds R on and above the diagonal and, below the diagonal of column k,
// the tail of the reflector vector v of step k, whose head is an implied 1. Each
// reflection is H = I + beta v v' with beta = -2 / v'v; beta is not stored, the
// solve recomputes v'v from the tail in the same order.
#pragma once

#include "../frame/checks.h"
#include "../frame/elements.h"
#include "../frame/sse.h"
#include "../frame/x87.h"

namespace vorx {
namespace qr {

// A column whose sum of squares from the diagonal down is below 2^-23 cannot be
// reflected. The same constant for both types, not scaled to the matrix, compared
// with the sum itself (a norm below about 3.45e-4 fails, in 64f too).
constexpr double kThreshold = 0x1p-23;

// 32f: every sum, product, quotient and r and beta in SSE single precision; the
// threshold test and the root alone go to the x87 unit, the root rounded to single
// on its way back. Additions and products keep their operands in the order written.
template <class T>
struct Arith;

template <>
struct Arith<float> {
    using W = float;
    static float load(const float* p) { return *p; }
    static void store(float* p, float v) { *p = v; }
    static float add(float a, float b) { return sse::add(a, b); }
    static float mul(float a, float b) { return sse::mul(a, b); }
    // A NaN sum fails: no comparison with a NaN is true.
    static bool passes(float sum) { return __builtin_fabsl(wide(sum)) >= kThreshold; }
    static float root(float sum) { return roundToFloat(__builtin_sqrtl(wide(sum))); }
    // a + norm where a > 0, else a - norm (zero and NaN), as a + (-norm): the same
    // bits, since norm is never a NaN. No branch: the sign of a is data.
    static float away(float a, float norm)
    {
        sse::R va = _mm_set_ss(a);
        sse::R flip = _mm_andnot_ps(_mm_cmpgt_ss(va, _mm_setzero_ps()), _mm_set_ss(-0.0f));
        return _mm_cvtss_f32(sse::add1(va, _mm_xor_ps(_mm_set_ss(norm), flip)));
    }
};

// 64f: on the x87 unit, every intermediate at register width; only what goes to
// memory (dst, scratch) is rounded to double, and later steps read it back.
template <>
struct Arith<double> {
    using W = long double;
    static long double load(const double* p) { return wide(*p); }
    static void store(double* p, long double v) { storeRounded(p, v); }
    static long double add(long double a, long double b) { return a + b; }
    static long double mul(long double a, long double b) { return a * b; }
    static bool passes(long double sum) { return __builtin_fabsl(sum) >= kThreshold; }
    static long double root(long double sum) { return __builtin_sqrtl(sum); }
    static long double away(long double a, long double norm) { return a + (a > 0 ? norm : -norm); }
};

// Reflectors of an object of `width` columns and `height` rows: one per column, but
// none for the last column of a square matrix.
inline uint32_t reflectors(uint32_t width, uint32_t height) { return width == height ? width - 1 : width; }

// One object of an operand, found once per object: element (i, j) from its first
// element by the strides, or through its own table entry shifted to the object.
template <class T>
struct Strided {
    T* p;
    int32_t rs, es;
    T* at(uint32_t i, uint32_t j) const { return byteAt(p, step(i, rs) + step(j, es)); }
};
template <class T>
struct Entries {
    T* const* x;
    intptr_t off;
    uint32_t pitch;
    T* at(uint32_t i, uint32_t j) const { return byteAt(x[i * pitch + j], off); }
};
template <class T>
Strided<T> object(const Direct<T>& v, uint32_t n) { return {v.at(n, 0, 0), v.rs, v.es}; }
template <class T>
Strided<T> object(const ObjTable<T>& v, uint32_t n) { return {v.at(n, 0, 0), v.rs, v.es}; }
template <class T>
Entries<T> object(const ElemTable<T>& v, uint32_t n) { return {v.x, v.bs + step(n, v.os), v.pitch}; }

// The tags of the exported names derive from here; `Adjacent` where the elements of
// a row lie E bytes apart (Contiguous and List layouts).
template <template <class, int, bool> class Run>
struct Family {
    template <class T, int N, Lay L>
    struct Impl : Run<T, N, adjacent(L)> {};
};

// Where a step keeps the values it reads again: for a fixed order a local array,
// which no store to dst or scratch can change (so they stay in registers); for a
// run-time order the caller's scratch itself.
template <class T, int N>
struct Kept {
    T local[N];
    T* at(T*) { return local; }
};
template <class T>
struct Kept<T, 0> {
    T* at(T* scratch) { return scratch; }
};

}  // namespace qr
}  // namespace vorx
