// Multiplication of vectors and matrices by a constant: dst = src * value, one
// multiplication per element in every form (32f rounded to single, 64f formed on the
// x87 unit and rounded once by the store). The element loops, the vector schemes and
// the run-time fast path are those of the sum with a constant; only the fixed-size
// 32f matrix forms have schemes of their own, below.
#pragma once

#include "matrix.h"
#include "vector.h"

namespace vorx {

struct MulOp {
    static float s(float a, float b) { return sse::mul(a, b); }
    static long double x(long double a, long double b) { return a * b; }
    static sse::R p(sse::R a, sse::R b) { return sse::mul(a, b); }
    static sse::R p1(sse::R a, sse::R b) { return sse::mul1(a, b); }
};

namespace scale {

using namespace mat;

// A matrix in row registers, every register times the value: the matrix family's
// one packed operation per register.
template <int N>
Rows<N> scaled(const Rows<N>& m, R v)
{
    Rows<N> x;
#pragma GCC unroll 6
    for (int i = 0; i < N; ++i) x.r[i] = MulOp::p(m.r[i], v);
#pragma GCC unroll 6
    for (int q = 0; q < Rows<N>::S; ++q) x.s[q] = N == 5 ? MulOp::p1(m.s[q], v) : MulOp::p(m.s[q], v);
    return x;
}

// An object's rows by plain arithmetic from its first row. The compiler may fold it
// into base-plus-index addresses with the multiples of the row stride kept in
// registers: the whole object is loaded before anything is stored, so no address
// needs to survive a store.
template <class T>
struct PlainRows {
    using Row = T*;
    T* p;
    int32_t rs;
    Row row(uint32_t) const { return p; }
    Row down(Row r) const { return byteAt(r, rs); }
};
template <class T>
PlainRows<T> plainRows(const Obj<T>& o) { return {o.p, o.rs}; }

// One object of a fixed-size 32f matrix, Contiguous or List, aligned moves where Al.
// A plain source goes row register by row register. A transposed 4x4 source is
// loaded whole and transposed in registers before anything is stored, so dst may be
// src; the other transposed sizes gather and store one result row at a time, so in
// place they read elements already overwritten.
template <int N, bool Al, class A, class D>
[[gnu::always_inline]] inline void object(const A& a, R v, const D& d)
{
    if constexpr (!isTr<A>) {
        storeRows<N, Al>(plainRows(d), scaled<N>(fetchRows<N, Al>(plainRows(a)), v));
    } else if constexpr (N == 4) {
        Rows<4> m = fetchRows<4, Al>(plainRows(a.o));  // stored rows: columns of the result
        _MM_TRANSPOSE4_PS(m.r[0], m.r[1], m.r[2], m.r[3]);
        storeRows<4, Al>(plainRows(d), scaled<4>(m, v));
    } else {
        auto e = [&](uint32_t i, uint32_t j) { return *a.at(i, j); };
        float* p = d.row(0);
        for (uint32_t i = 0; i < N; ++i) {
            if constexpr (N == 3) {
                sse::store3(p, sse::mul(_mm_setr_ps(e(i, 0), 0.0f, e(i, 1), e(i, 2)), v));  // e0, 0, e1, e2
            } else {
                storeHead<N, Al>(p, sse::mul(_mm_setr_ps(e(i, 0), e(i, 1), e(i, 2), e(i, 3)), v));
                if constexpr (N == 5) sse::store1(p + 4, sse::mul1(_mm_set_ss(e(i, 4)), v));
                else sse::store2(p + 4, sse::mul(_mm_setr_ps(e(i, 4), e(i, 5), 0.0f, 0.0f), v));
            }
            if (i + 1 < N) p = d.down(p);
        }
    }
}

// Fixed sizes, 32f, Contiguous and List: four lanes with the value broadcast. From
// size 4 the pointers and strides of src and dst (object strides too) are tested
// for 16 bytes, once in Contiguous and object by object on the shifted list entries
// in List layout; both branches compute the same.
// Contiguous: the objects one after the other, both cursors stepped along.
template <int N, bool Al, class A, class D>
void run(A a, R v, D d, uint32_t count)
{
    for (; count; --count, a.next(), d.next()) object<N, Al>(a.obj(), v, d.obj());
}

template <int N, class A, class D>
vorxStatus packed(A a, float value, D d, uint32_t count, bool array)
{
    R v = sse::broadcast(value);
    auto aligned = [&](uint32_t k) { return N > 3 && ((alignBits(a, k) | alignBits(d, k)) & 15) == 0; };
    if constexpr (!IsObjTable<D>::value) {
        // No table and no list to test: the frame is the null test and the count test,
        // and the alignment branch is taken once for the call.
        if (anyNull(a, d)) return kNull;
        if (!array) count = 1;
        if (count == 0) return kOk;
        if (aligned(0)) run<N, true>(a.first(), v, d.first(), count);
        else run<N, false>(a.first(), v, d.first(), count);
        return kOk;
    } else {
        auto each = [&](uint32_t k, const auto& a1, float, const auto& d1) {
            if (aligned(k)) object<N, true>(a1, v, d1);
            else object<N, false>(a1, v, d1);
        };
        return arrayCall(false, N * N, count, nothing, each, a, value, d);
    }
}

}  // namespace scale

// The family of mc, mTc, mac, maTc.
struct ScaleFamily {
    template <class T, int N, Lay L>
    struct Impl {
        static constexpr bool packed = sizeof(T) == 4 && N > 0 && adjacent(L);

        template <class A, class D>
        static vorxStatus run(A a, T v, D d, uint32_t w, uint32_t h)
        {
            if constexpr (packed) return scale::packed<N>(a, v, d, 1, false);
            else return elementwiseSingle<MulOp, N>(a, v, d, w, h);
        }

        template <class A, class D>
        static vorxStatus run(A a, T v, D d, uint32_t w, uint32_t h, uint32_t count)
        {
            if constexpr (packed) return scale::packed<N>(a, v, d, count, true);
            else return elementwiseArray<MulOp, N * N, 0>(a, v, d, w, h, count);
        }
    };
};

namespace tag {
struct Mul_vc : VecFamily<MulOp> {};
struct Mul_vac : VecFamily<MulOp, 2> {};
struct Mul_mc : ScaleFamily {};
struct Mul_mTc : ScaleFamily {};
struct Mul_mac : ScaleFamily {};
struct Mul_maTc : ScaleFamily {};
}  // namespace tag

}  // namespace vorx
