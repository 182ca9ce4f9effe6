// Vector addition and subtraction: the family template, its tags, and the packed
// 32f schemes of the fixed sizes and of the run-time Contiguous single vector.
#pragma once

#include "../frame/stream.h"
#include "elementwise.h"

namespace vorx {

// A vector of N floats in registers, per size:
//   3  one register, element 0 in lane 0, elements 1, 2 in lanes 2, 3 (lane 1 zero)
//   4  one register, moved as two 64-bit halves
//   5  one register for elements 0..3, element 4 in lane 0 of a second, scalar operation
//   6  one register for elements 0..3, elements 4, 5 in the low lanes of a zeroed second
template <int N> struct VecReg;

template <>
struct VecReg<3> {
    sse::R r;  // e0, 0, e1, e2
    static VecReg load(const float* p) { return {sse::load3(p)}; }
    static VecReg splat(float v) { return {sse::broadcast(v)}; }
    void store(float* p) const { sse::store3(p, r); }
    template <class Op> static VecReg op(VecReg a, VecReg b) { return {Op::p(a.r, b.r)}; }
};

template <>
struct VecReg<4> {
    sse::R r;  // e0, e1, e2, e3
    static VecReg load(const float* p) { return {sse::load4h(p)}; }
    static VecReg splat(float v) { return {sse::broadcast(v)}; }
    void store(float* p) const { sse::store4h(p, r); }
    template <class Op> static VecReg op(VecReg a, VecReg b) { return {Op::p(a.r, b.r)}; }
};

template <>
struct VecReg<5> {
    sse::R r, s;  // e0, e1, e2, e3 | e4, 0, 0, 0
    static VecReg load(const float* p) { return {sse::load4h(p), sse::load1(p + 4)}; }
    static VecReg splat(float v) { return {sse::broadcast(v), sse::broadcast(v)}; }
    void store(float* p) const
    {
        sse::store4h(p, r);
        sse::store1(p + 4, s);
    }
    template <class Op> static VecReg op(VecReg a, VecReg b) { return {Op::p(a.r, b.r), Op::p1(a.s, b.s)}; }
};

template <>
struct VecReg<6> {
    sse::R r, s;  // e0, e1, e2, e3 | e4, e5, 0, 0
    static VecReg load(const float* p) { return {sse::load4h(p), sse::load2(p + 4)}; }
    static VecReg splat(float v) { return {sse::broadcast(v), sse::broadcast(v)}; }
    void store(float* p) const
    {
        sse::store4h(p, r);
        sse::store2(p + 4, s);
    }
    template <class Op> static VecReg op(VecReg a, VecReg b) { return {Op::p(a.r, b.r), Op::p(a.s, b.s)}; }
};

// An object's vector, or a value in every lane.
template <int N> VecReg<N> fetch(float v) { return VecReg<N>::splat(v); }
template <int N, class O> VecReg<N> fetch(const O& o) { return VecReg<N>::load(o.row(0)); }

// Fixed size, one object, Contiguous: one packed operation per register.
template <class Op, int N, class A, class B, class D>
vorxStatus packedVector(A a, B b, D d)
{
    if (anyNull(a, b, d)) return kNull;
    VecReg<N>::template op<Op>(fetch<N>(only(a)), fetch<N>(only(b))).store(only(d).row(0));
    return kOk;
}

// Fixed size, arrays, Contiguous and List. The operand that is the same for every
// object (source `Single`, 1 or 2: a vector or a value) is loaded, or broadcast,
// once after the table checks and ahead of the count test.
template <class Op, int N, int Single, class A, class B, class D>
vorxStatus packedVectors(A a, B b, D d, uint32_t count)
{
    VecReg<N> inv{};
    auto before = [&] {
        if constexpr (Single == 1) inv = fetch<N>(only(a));
        if constexpr (Single == 2) inv = fetch<N>(only(b));
        sse::keep(inv);
    };
    auto object = [&](uint32_t, const auto& a1, const auto& b1, const auto& d1) {
        VecReg<N> x, y;
        if constexpr (Single == 1) x = inv; else x = fetch<N>(a1);
        if constexpr (Single == 2) y = inv; else y = fetch<N>(b1);
        VecReg<N>::template op<Op>(x, y).store(d1.row(0));
    };
    auto whole = [&] { return dense::run<Op, N, Single>(a, b, d, 1, N, count); };
    return arrayCallWhole(false, N, count, before, whole, object, a, b, d);
}

// The 3-element forms with one single vector (vav, vva) stay scalar: three scalar
// operations per object, the single vector held in three registers.
template <class Op, int Single, class A, class B, class D>
vorxStatus scalarVectors3(A a, B b, D d, uint32_t count)
{
    float s[3] = {};
    auto before = [&] {
        auto hold = [&](const auto& v) {
            for (uint32_t j = 0; j < 3; ++j) s[j] = *v.at(0, j);
        };
        if constexpr (Single == 1) hold(only(a)); else hold(only(b));
        sse::keep(s);
    };
    auto object = [&](uint32_t, const auto& a1, const auto& b1, const auto& d1) {
        for (uint32_t j = 0; j < 3; ++j) {
            float x, y;
            if constexpr (Single == 1) x = s[j]; else x = *a1.at(0, j);
            if constexpr (Single == 2) y = s[j]; else y = *b1.at(0, j);
            *d1.at(0, j) = Op::s(x, y);
        }
    };
    auto whole = [&] { return dense::run<Op, 3, Single>(a, b, d, 1, 3, count); };
    return arrayCallWhole(false, 3, count, before, whole, object, a, b, d);
}

// Run-time size, one vector, Contiguous 32f (vv, vc, cv): the fast path of the frame.
// vv reads src1 unaligned and src2 as its address allows; vc and cv read src so.
inline stream::Keyed keyed(const Direct<const float>& v) { return {{v.x}}; }
inline stream::Value keyed(float v) { return stream::Value(v); }

template <class Op, class A, class B>
vorxStatus dispatchedVector(A a, B b, Direct<float> d, uint32_t len)
{
    if (anyNull(a, b, d)) return kNull;
    if (len == 0) return kBadSize;
    if constexpr (__is_same(B, float))
        stream::run<Op>(d.x, len, keyed(a), keyed(b));
    else
        stream::run<Op>(d.x, len, stream::Loose{a.x}, keyed(b));
    return kOk;
}

template <class T> constexpr bool isF32 = sizeof(T) == 4;

// The family: Op the arithmetic, Single the source that is one vector or a value in
// an array call (0: none).
template <class Op, int Single = 0>
struct VecFamily {
    template <class T, int N, Lay L>
    struct Impl {
        static constexpr bool packed = isF32<T> && N > 0 && adjacent(L);

        template <class A, class B, class D>
        static vorxStatus run(A a, B b, D d, uint32_t len)
        {
            if constexpr (packed)
                return packedVector<Op, N>(a, b, d);
            else if constexpr (isF32<T> && N == 0 && L == Lay::C)
                return dispatchedVector<Op>(a, b, d, len);
            else
                return elementwiseSingle<Op, N>(a, b, d, len, 1);
        }

        template <class A, class B, class D>
        static vorxStatus run(A a, B b, D d, uint32_t len, uint32_t count)
        {
            constexpr bool singleVector = Single == 1 || (Single == 2 && !__is_same(B, float));
            if constexpr (packed && N == 3 && singleVector)
                return scalarVectors3<Op, Single>(a, b, d, count);
            else if constexpr (packed)
                return packedVectors<Op, N, Single>(a, b, d, count);
            else
                return elementwiseArray<Op, N, Single>(a, b, d, len, 1, count);
        }
    };
};

namespace tag {
struct Add_vv : VecFamily<AddOp> {};
struct Add_vc : VecFamily<AddOp> {};
struct Add_vav : VecFamily<AddOp, 2> {};
struct Add_vac : VecFamily<AddOp, 2> {};
struct Add_vava : VecFamily<AddOp> {};
struct Sub_vv : VecFamily<SubOp> {};
struct Sub_vc : VecFamily<SubOp> {};
struct Sub_cv : VecFamily<RevSubOp> {};
struct Sub_vav : VecFamily<SubOp, 2> {};
struct Sub_vac : VecFamily<SubOp, 2> {};
struct Sub_vva : VecFamily<SubOp, 1> {};
struct Sub_cva : VecFamily<RevSubOp, 2> {};
struct Sub_vava : VecFamily<SubOp> {};
}  // namespace tag

}  // namespace vorx
