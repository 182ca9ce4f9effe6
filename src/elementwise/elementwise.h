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

#include <type_traits>

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

// Dense runs. Where every array operand of a call is one run (run() in operand.h),
// the call is a single pass over its count * size elements: 32f four lanes at a time
// with a scalar tail, 64f element by element. Each element is still the one operation
// of the element loop, the pass reads and writes exactly the bytes the object loop
// does, and each element is read before its own place is written, so it gives the
// same bits and stays safe in place. A Contiguous or Strided run goes object after
// object, and a single operand of the call (the one vector or matrix) repeats with
// the object's period; a Pointer run goes element after element, and there a single
// operand's element is the same along each element's stretch of count objects.
namespace dense {

// The sources of a pass at element m; j is the place in a repeating pattern.
template <class T>
struct Flat {
    const T* p;
    T at(uint32_t m, uint32_t) const { return p[m]; }
    sse::R four(uint32_t m, uint32_t) const { return sse::load4u(p + m); }
};
template <class T>
struct Same {
    T v;
    T at(uint32_t, uint32_t) const { return v; }
    sse::R four(uint32_t, uint32_t) const { return sse::broadcast(v); }
};
// One object's P elements repeated to G elements (32f: G = lcm(P, 4), so that four
// lanes never wrap; 64f: G = P), aligned so that a cycle's lanes are aligned loads.
template <class T, uint32_t G>
struct Cycle {
    alignas(16) T e[G];
    T at(uint32_t, uint32_t j) const { return e[j]; }
    sse::R four(uint32_t, uint32_t j) const { return sse::load4a(e + j); }
};

constexpr uint32_t gcd(uint32_t a, uint32_t b) { return b ? gcd(b, a % b) : a; }
template <class T>
constexpr uint32_t cycleOf(uint32_t p) { return sizeof(T) == 4 && p ? p / gcd(p, 4) * 4 : p; }

template <class T, uint32_t P, uint32_t G, class O>
Cycle<T, G> repeat(const O& o, uint32_t cols)
{
    Cycle<T, G> c;
    for (uint32_t i = 0; i < P / cols; ++i)
        for (uint32_t j = 0; j < cols; ++j) c.e[i * cols + j] = *o.at(i, j);
    for (uint32_t i = P; i < G; ++i) c.e[i] = c.e[i - P];
    return c;
}

// n elements from m on, with the pattern at j (no wrap: j + n <= G where G > 0).
template <class Op, class T, class X, class Y>
[[gnu::always_inline]] inline void stretch(T* d, const X& x, const Y& y, uint32_t m, uint32_t j, uint32_t n)
{
    uint32_t q = 0;
    if constexpr (sizeof(T) == 4) {
#pragma GCC unroll 2
        for (; n - q >= 4; q += 4) sse::store4u(d + m + q, Op::p(x.four(m + q, j + q), y.four(m + q, j + q)));
    }
#pragma GCC unroll 4
    for (; q < n; ++q) apply<Op>(d + m + q, x.at(m + q, j + q), y.at(m + q, j + q));
}

// P elements from m on, with the pattern from its start, as one unrolled pass: one
// object that is a run, or one cycle of a repeating source.
template <class Op, uint32_t P, class T, class X, class Y>
[[gnu::always_inline]] inline void object(T* d, const X& x, const Y& y, uint32_t m = 0)
{
    constexpr uint32_t packed = sizeof(T) == 4 ? P / 4 * 4 : 0;
    if constexpr (packed > 0)
#pragma GCC unroll 32
        for (uint32_t q = 0; q < packed; q += 4) sse::store4u(d + m + q, Op::p(x.four(m + q, q), y.four(m + q, q)));
#pragma GCC unroll 64
    for (uint32_t q = packed; q < P; ++q) apply<Op>(d + m + q, x.at(m + q, q), y.at(m + q, q));
}

// The pass over n elements. With a repeating source (G > 0) it goes a whole cycle at
// a time, unrolled, so that each of the cycle's lanes sits at a fixed place.
template <class Op, uint32_t G, class T, class X, class Y>
[[gnu::always_inline]] inline void pass(T* d, const X& x, const Y& y, uint32_t n)
{
    uint32_t m = 0;
    if constexpr (G > 0)
        for (; n - m >= G; m += G) object<Op, G>(d, x, y, m);
    stretch<Op>(d, x, y, m, 0, n - m);
}

// Objects that are each one run (rows of cols elements with nothing between them),
// wherever the objects themselves lie: List objects, or Contiguous ones with room
// between them.
template <class V>
bool objectRun(const V& v, uint32_t rows, uint32_t cols)
{
    using T = typename V::Elem;
    if constexpr (IsElemTable<V>::value || isTr<V>)
        return false;
    else
        return v.es == sizeof(T) && (rows == 1 || v.rs == static_cast<int32_t>(cols * sizeof(T)));
}


template <class V> constexpr bool isValue = std::is_arithmetic_v<V>;

// The whole call as one pass, if its array operands are runs of rows x cols objects
// (P = rows * cols fixed, or 0 for a size given at run time, where a single vector or
// matrix operand keeps the object loop). `Single`: the source that is one object.
template <class Op, uint32_t P, int Single, class A, class B, class D>
[[gnu::always_inline]] inline bool run(const A& a, const B& b, const D& d, uint32_t rows, uint32_t cols,
                                       uint32_t count)
{
    using T = typename D::Elem;
    const uint32_t size = rows * cols;
    if (count > UINT32_MAX / size) return false;
    T* dr = d.run(rows, cols, count);
    if (!dr) return false;
    const T* r1 = nullptr;
    const T* r2 = nullptr;
    if constexpr (!isValue<A> && Single != 1) {
        if (!(r1 = a.run(rows, cols, count))) return false;
    }
    if constexpr (!isValue<B> && Single != 2) {
        if (!(r2 = b.run(rows, cols, count))) return false;
    }
    constexpr bool byElement = IsElemTable<D>::value;
    constexpr bool single = (Single == 1 && !isValue<A>) || (Single == 2 && !isValue<B>);
    if constexpr (single && !byElement && P == 0) {
        return false;
    } else if constexpr (byElement) {
        // Element after element: each element's stretch of count objects.
        for (uint32_t e = 0; e < size; ++e) {
            const T* ra = r1 ? r1 + e * count : nullptr;
            const T* rb = r2 ? r2 + e * count : nullptr;
            auto go = [&](const auto& x, const auto& y) { pass<Op, 0>(dr + e * count, x, y, count); };
            auto withB = [&](const auto& x) {
                if constexpr (isValue<B>) go(x, Same<T>{b});
                else if constexpr (Single == 2) go(x, Same<T>{*only(b).at(e / cols, e % cols)});
                else go(x, Flat<T>{rb});
            };
            if constexpr (isValue<A>) withB(Same<T>{a});
            else if constexpr (Single == 1) withB(Same<T>{*only(a).at(e / cols, e % cols)});
            else withB(Flat<T>{ra});
        }
        return true;
    } else {
        // Object after object; a single object repeats with period P.
        constexpr uint32_t G = single ? cycleOf<T>(P) : 0;
        const uint32_t n = count * size;
        auto cycle = [&](const auto& v) { return repeat<T, P, G>(only(v), cols); };
        auto withB = [&](const auto& x) {
            if constexpr (isValue<B>) pass<Op, G>(dr, x, Same<T>{b}, n);
            else if constexpr (Single == 2) pass<Op, G>(dr, x, cycle(b), n);
            else pass<Op, G>(dr, x, Flat<T>{r2}, n);
        };
        if constexpr (isValue<A>) withB(Same<T>{a});
        else if constexpr (Single == 1) withB(cycle(a));
        else withB(Flat<T>{r1});
        return true;
    }
}

}  // namespace dense

// Contiguous and Strided arrays whose operands all step alike (the same object, row
// and element strides; a value or the single operand aside): one byte offset
// addresses element (i, j) of object k in every operand, from its base. The i386 loop
// then keeps the bases, the offset and a stride in registers, where a pointer and
// three strides per operand would not fit. The same elements in the same order.
namespace alike {

template <int Single, int I, class V>
constexpr bool stepping = !std::is_arithmetic_v<V> && Single != I;

template <class V>
constexpr bool direct = false;
template <class T>
constexpr bool direct<Direct<T>> = true;

template <int Single, int I, class V>
bool same(const V& v, int32_t os, int32_t rs, int32_t es)
{
    if constexpr (!stepping<Single, I, V>) return true;
    else return v.os == os && v.rs == rs && v.es == es;
}

// Operand I's element (i, j) at byte offset e: a stepping operand from its base, the
// single operand at its own place, a value as it is.
template <int Single, int I, class V>
[[gnu::always_inline]] inline auto get(const V& v, uintptr_t e, uint32_t i, uint32_t j)
{
    if constexpr (stepping<Single, I, V>) return *byteAt(v.x, e);
    else if constexpr (std::is_arithmetic_v<V>) return v;
    else return *only(v).at(i, j);
}

template <class Op, int Size, int Single, class A, class B, class D>
[[gnu::always_inline]] inline bool run(const A& a, const B& b, const D& d, uint32_t w, uint32_t h, uint32_t count)
{
    constexpr bool views = (direct<A> || !stepping<Single, 1, A>) && (direct<B> || !stepping<Single, 2, B>);
    if constexpr (!direct<D> || !views) {
        return false;
    } else {
        const int32_t os = d.os, rs = d.rs, es = d.es;
        if (!same<Single, 1>(a, os, rs, es) || !same<Single, 2>(b, os, rs, es)) return false;
        // Offsets wrap modulo the address size, as addresses do.
        auto wrapped = [](int32_t stride) { return static_cast<uintptr_t>(intptr_t{stride}); };
        const uintptr_t objStep = wrapped(os), rowStep = wrapped(rs), elemStep = wrapped(es);
        uintptr_t off = 0;
        for (uint32_t k = 0; k < count; ++k, off = opaque(off + objStep)) {
            uintptr_t r = off;
#pragma GCC unroll 6
            for (uint32_t i = 0; i < h; ++i, r = opaque(r + rowStep)) {
                uintptr_t e = r;
#pragma GCC unroll 6
                for (uint32_t j = 0; j < w; ++j, e += elemStep)
                    apply<Op>(byteAt(d.x, e), get<Single, 1>(a, e, i, j), get<Single, 2>(b, e, i, j));
            }
        }
        return true;
    }
}

}  // namespace alike

// Generic array call: objects in ascending k, or one pass over a dense run. `Size`
// is the fixed number of elements of an object, 0 for a size given at run time;
// `Single` the source that is one vector or matrix (or a value) in the call.
template <class Op, int Size, int Single, class A, class B, class D>
[[gnu::always_inline]] inline vorxStatus elementwiseArray(A a, B b, D d, uint32_t w, uint32_t h, uint32_t count)
{
    a = shaped(a, h, w);
    b = shaped(b, h, w);
    d = shaped(d, h, w);
    auto whole = [&] {
        return dense::run<Op, Size, Single>(a, b, d, h, w, count) ||
               alike::run<Op, Size, Single>(a, b, d, w, h, count);
    };
    auto object = [&](uint32_t, const auto& a1, const auto& b1, const auto& d1) {
        elementwiseObject<Op, false>(a1, b1, d1, w, h);
    };
    return arrayCallWhole(Size == 0 && (w == 0 || h == 0), w * h, count, nothing, whole, object, a, b, d);
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
