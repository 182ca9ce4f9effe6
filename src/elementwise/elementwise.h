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

// An operand's element in row r, column j of one object; a scalar operand is its
// value, and its rows are nothing.
struct NoRow {};
inline NoRow row0(float) { return {}; }
inline NoRow row0(double) { return {}; }
inline NoRow down(float, NoRow) { return {}; }
inline NoRow down(double, NoRow) { return {}; }
inline float get(float v, NoRow, uint32_t) { return v; }
inline double get(double v, NoRow, uint32_t) { return v; }
template <class O>
inline auto row0(const O& o) { return o.row(0); }
template <class O, class R>
inline R down(const O& o, R r) { return o.down(r); }
template <class O, class R>
inline auto get(const O& o, R r, uint32_t j) { return *o.in(r, j); }

// Gives a view the shape of the operation (h rows, w columns): the table pitch of a
// Pointer-layout operand, plain or transposed.
inline float shaped(float v, uint32_t, uint32_t) { return v; }
inline double shaped(double v, uint32_t, uint32_t) { return v; }
template <class V>
inline V shaped(const V& v, uint32_t h, uint32_t w) { return v.withShape(h, w); }

// One object: rows in ascending i, walked down one row at a time, columns in
// ascending j (a fixed size passes w and h as constants, and the loops open out).
// `Entries`: a
// single-object Pointer call tests the entries of each element just before it;
// false at a null, with the elements before it written.
template <class Op, bool Entries, class A, class B, class D>
[[gnu::always_inline]] inline bool elementwiseObject(const A& a, const B& b, const D& d, uint32_t w,
                                                     uint32_t h)
{
    auto ra = row0(a);
    auto rb = row0(b);
    auto rd = d.row(0);
#pragma GCC unroll 6
    for (uint32_t i = 0; i < h; ++i) {
#pragma GCC unroll 6
        for (uint32_t j = 0; j < w; ++j) {
            if (Entries && !elementsOk(i, j, a, b, d)) return false;
            apply<Op>(d.in(rd, j), get(a, ra, j), get(b, rb, j));
        }
        if (i + 1 < h) {
            ra = down(a, ra);
            rb = down(b, rb);
            rd = d.down(rd);
        }
    }
    return true;
}

// Generic array call: objects in ascending k. `N` is the fixed size, 0 for a size
// given at run time.
template <class Op, int N, class A, class B, class D>
[[gnu::always_inline]] inline vorxStatus elementwiseArray(A a, B b, D d, uint32_t w, uint32_t h, uint32_t count)
{
    a = shaped(a, h, w);
    b = shaped(b, h, w);
    d = shaped(d, h, w);
    auto object = [&](uint32_t, const auto& a1, const auto& b1, const auto& d1) {
        elementwiseObject<Op, false>(a1, b1, d1, w, h);
    };
    return arrayCall(N == 0 && (w == 0 || h == 0), w * h, count, nothing, object, a, b, d);
}

// Generic single-object call; in Pointer layout the entries of each element are
// tested just before it is computed, so earlier elements stay written.
template <class Op, int N, class A, class B, class D>
[[gnu::always_inline]] inline vorxStatus elementwiseSingle(A a, B b, D d, uint32_t w, uint32_t h)
{
    if (anyNull(a, b, d)) return kNull;
    if (N == 0 && (w == 0 || h == 0)) return kBadSize;
    constexpr bool entries = IsElemTable<D>::value;
    bool done = elementwiseObject<Op, entries>(only(shaped(a, h, w)), only(shaped(b, h, w)),
                                                  only(shaped(d, h, w)), w, h);
    return done ? kOk : kNull;
}

}  // namespace vorx
