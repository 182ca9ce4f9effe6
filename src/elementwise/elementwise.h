// Element-wise sum and difference: the generic element loops of vectors (one row)
// and matrices, for both element types and every layout.
//
// Each element is one operation with one rounding: 32f in SSE single precision,
// 64f on the x87 unit from exactly loaded operands, rounded to double by the store.
// Subtraction is a true subtraction, never the addition of a negated operand.
#pragma once

#include "../frame/checks.h"
#include "../frame/sse.h"
#include "../frame/x87.h"

namespace vorx {

struct AddOp {
    static float s(float a, float b) { return sse::add(a, b); }
    static long double x(long double a, long double b) { return a + b; }
    static sse::R p(sse::R a, sse::R b) { return sse::add(a, b); }
    static sse::R p1(sse::R a, sse::R b) { return sse::add1(a, b); }
};

struct SubOp {
    static float s(float a, float b) { return a - b; }
    static long double x(long double a, long double b) { return a - b; }
    static sse::R p(sse::R a, sse::R b) { return _mm_sub_ps(a, b); }
    static sse::R p1(sse::R a, sse::R b) { return _mm_sub_ss(a, b); }
};

// value - src for the forms named constant first (their value comes second in the call).
struct RevSubOp {
    static float s(float a, float b) { return b - a; }
    static long double x(long double a, long double b) { return b - a; }
    static sse::R p(sse::R a, sse::R b) { return _mm_sub_ps(b, a); }
    static sse::R p1(sse::R a, sse::R b) { return _mm_sub_ss(b, a); }
};

// One element of the result.
template <class Op>
inline void apply(float* d, float a, float b) { *d = Op::s(a, b); }
template <class Op>
inline void apply(double* d, double a, double b)
{
    *d = static_cast<double>(Op::x(wide(a), wide(b)));  // the store rounds once
}

// An operand's element (k, i, j); a scalar operand is its value.
inline float get(float v, uint32_t, uint32_t, uint32_t) { return v; }
inline double get(double v, uint32_t, uint32_t, uint32_t) { return v; }
template <class V>
inline auto get(const V& v, uint32_t k, uint32_t i, uint32_t j) { return *v.at(k, i, j); }

// Gives a view the shape of the operation (h rows, w columns): the table pitch of a
// Pointer-layout operand, plain or transposed.
inline float shaped(float v, uint32_t, uint32_t) { return v; }
inline double shaped(double v, uint32_t, uint32_t) { return v; }
template <class V>
inline V shaped(const V& v, uint32_t h, uint32_t w) { return v.withShape(h, w); }

// Generic array call: objects in ascending k, rows in ascending i, columns in
// ascending j. `N` is the fixed size, 0 for a size given at run time.
template <class Op, int N, class A, class B, class D>
vorxStatus elementwiseArray(A a, B b, D d, uint32_t w, uint32_t h, uint32_t count)
{
    a = shaped(a, h, w);
    b = shaped(b, h, w);
    d = shaped(d, h, w);
    auto object = [&](uint32_t k) {
        for (uint32_t i = 0; i < h; ++i)
            for (uint32_t j = 0; j < w; ++j)
                apply<Op>(d.at(k, i, j), get(a, k, i, j), get(b, k, i, j));
    };
    return arrayCall(N == 0 && (w == 0 || h == 0), w * h, count, nothing, object, a, b, d);
}

// Generic single-object call; in Pointer layout the entries of each element are
// tested just before it is computed, so earlier elements stay written.
template <class Op, int N, class A, class B, class D>
vorxStatus elementwiseSingle(A a, B b, D d, uint32_t w, uint32_t h)
{
    if (anyNull(a, b, d)) return kNull;
    if (N == 0 && (w == 0 || h == 0)) return kBadSize;
    a = shaped(a, h, w);
    b = shaped(b, h, w);
    d = shaped(d, h, w);
    for (uint32_t i = 0; i < h; ++i)
        for (uint32_t j = 0; j < w; ++j) {
            if (!elementsOk(i, j, a, b, d)) return kNull;
            apply<Op>(d.at(0, i, j), get(a, 0, i, j), get(b, 0, i, j));
        }
    return kOk;
}

}  // namespace vorx
