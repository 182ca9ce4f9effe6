// Weighted sums of vectors: saxpy (src1 * scale + src2) and the linear combination
// (src1 * scale1 + src2 * scale2), one pair or arrays, both element types, every
// layout.
//
// Each element is computed alone, so every form gives the same bits: 32f rounds each
// product, then the sum; 64f keeps products and sum at register width and rounds once
// at the store. No scale is ever tested: a zero scale still multiplies.
#pragma once

#include <utility>

#include "../elementwise/vector.h"
#include "../frame/interleaved.h"

namespace vorx {

struct SaxpyOp {
    static float s(float a, float c, float b) { return sse::add(sse::mul(a, c), b); }
    static sse::R p(sse::R a, sse::R c, sse::R b) { return sse::add(sse::mul(a, c), b); }
    static long double x(long double a, long double c, long double b) { return a * c + b; }
};

struct LCombOp {
    static float s(float a, float c, float b, float e) { return sse::add(sse::mul(a, c), sse::mul(b, e)); }
    static sse::R p(sse::R a, sse::R c, sse::R b, sse::R e) { return sse::add(sse::mul(a, c), sse::mul(b, e)); }
    static long double x(long double a, long double c, long double b, long double e) { return a * c + b * e; }
};

namespace weighted {

// An operand's object k (`objectOf`) and element j of it (`elem`); a value is itself.
inline float objectOf(float v, uint32_t) { return v; }
inline double objectOf(double v, uint32_t) { return v; }
template <class V>
inline auto objectOf(const V& v, uint32_t k) { return v.object(k); }
inline float elem(float v, uint32_t) { return v; }
inline double elem(double v, uint32_t) { return v; }
template <class O>
inline auto elem(const O& o, uint32_t j) { return *o.at(0, j); }

// One element of the result from its operands (vectors' elements and values).
template <class Op, class... V>
inline void put(float* d, V... v) { *d = Op::s(v...); }
template <class Op, class... V>
inline void put(double* d, V... v) { *d = static_cast<double>(Op::x(wide(v)...)); }  // the store rounds once

// One object of an array call, from the operands' objects.
template <class Op, int N, class D, class... S>
inline void object(const D& d, uint32_t len, const S&... s)
{
#pragma GCC unroll 6
    for (uint32_t j = 0; j < (N ? N : len); ++j) put<Op>(d.at(0, j), elem(s, j)...);
}

// Element loops. A single-object Pointer call tests the entries of element j of
// src1, src2, dst just before computing it; array calls scan their tables
// interleaved and test list entries per object.
template <class Op, int N, class D, class... S>
vorxStatus single(const D& d, uint32_t len, const S&... s)
{
    if (anyNull(s..., d)) return kNull;
    if (N == 0 && len == 0) return kBadSize;
    for (uint32_t j = 0; j < (N ? N : len); ++j) {
        if (!elementsOk(0, j, s..., d)) return kNull;
        put<Op>(d.at(0, 0, j), elem(objectOf(s, 0), j)...);
    }
    return kOk;
}

template <class Op, int N, class D, class... S>
vorxStatus array(const D& d, uint32_t len, uint32_t count, const S&... s)
{
    auto one = [&](uint32_t k) { object<Op, N>(d.object(k), len, objectOf(s, k)...); };
    auto objects = [&] { return eachObjectAt(count, one, s..., d); };
    return interleavedCall(N == 0 && len == 0, len, count, nothing, objects, s..., d);
}

// The run-time 32f Contiguous pair: the frame's fast path, src1 read unaligned and
// src2 by its address; the values broadcast.
template <class Op, class... S>
vorxStatus streamed(const Direct<float>& d, uint32_t len, const Direct<const float>& a, const S&... s)
{
    if (anyNull(a, s..., d)) return kNull;
    if (len == 0) return kBadSize;
    stream::run<Op>(d.x, len, stream::Loose{a.x}, keyed(s)...);
    return kOk;
}

// Arrays whose objects lie back to back (every object stride N elements) are one run
// of n elements: four a turn with unaligned moves, the rest one by one.
template <class Op, class... S>
void flat(float* d, uint32_t n, const S&... s)
{
    uint32_t j = 0;
    for (; n - j >= 4; j += 4) sse::store4u(d + j, Op::p(s.template load<false>(j)...));
    for (; j < n; ++j) d[j] = Op::s(s.at(j)...);
}

// Fixed sizes, 32f, Contiguous and List: one object in the registers of its size.
// Where an object's address is a multiple of 16, elements 0..3 move as one aligned
// full register and the rest as in the unaligned scheme.
template <int N>
VecReg<N> loadAligned(const float* p)
{
    VecReg<N> v{};
    v.r = sse::load4a(p);
    if constexpr (N == 5) v.s = sse::load1(p + 4);
    if constexpr (N == 6) v.s = sse::load2(p + 4);
    return v;
}
template <int N>
void storeAligned(float* p, const VecReg<N>& v)
{
    sse::store4a(p, v.r);
    if constexpr (N == 5) sse::store1(p + 4, v.s);
    if constexpr (N == 6) sse::store2(p + 4, v.s);
}
template <int N, bool A>
void store(float* p, const VecReg<N>& v)
{
    if constexpr (A) storeAligned<N>(p, v);
    else v.store(p);
}

template <class Op, int N, class... V>
VecReg<N> weigh(const V&... v)
{
    VecReg<N> o{};
    o.r = Op::p(v.r...);
    if constexpr (N >= 5) o.s = Op::p(v.s...);
    return o;
}

// An operand's registers for object k: a vector's object, or a value broadcast.
template <int N, bool A>
VecReg<N> take(float v, uint32_t) { return VecReg<N>::splat(v); }
template <int N, bool A, class V>
VecReg<N> take(const V& v, uint32_t k)
{
    const float* p = v.at(k, 0, 0);
    return A ? loadAligned<N>(p) : VecReg<N>::load(p);
}
inline bool alignedAt(float, uint32_t) { return true; }
template <class V>
bool alignedAt(const V& v, uint32_t k) { return sse::aligned16(v.at(k, 0, 0)); }

// An operand of a packed array call: an array moves with the object, while one
// vector (loaded ahead of the count test) or a value (broadcast) stays in registers.
template <int N, class V>
struct Moving {
    V v;
    void prepare() {}
    template <bool A>
    VecReg<N> at(uint32_t k) const { return take<N, A>(v, k); }
    bool aligned() const { return sse::aligned16(v.x) && (v.os & 15) == 0; }
    bool tight() const { return v.os == 4 * N; }
    stream::Loose run() const { return {v.x}; }
    bool alignedAt(uint32_t k) const { return weighted::alignedAt(v, k); }
};
template <int N, class V>
struct Held {
    V v;
    VecReg<N> r{};
    void prepare()
    {
        r = take<N, false>(v, 0);
        sse::keep(r);
    }
    template <bool A>
    VecReg<N> at(uint32_t) const { return r; }
    bool aligned() const { return true; }
    bool alignedAt(uint32_t) const { return true; }
    bool tight() const { return true; }
    stream::Value run() const { return stream::Value(v); }
};

// Operand I of (src1, scale, src2 [, scale2]) as a register operand; `Single` is the
// source (1 or 2) that is one vector in an array call.
template <int N, int Single, size_t I, class V>
auto regOperand(const V& v)
{
    constexpr bool value = __is_same(V, float);
    if constexpr (value || (Single == 1 && I == 0) || (Single == 2 && I == 2))
        return Held<N, V>{v};
    else
        return Moving<N, V>{v};
}

// `Align`: the form branches on 16-byte alignment, in Contiguous layout once on the
// moving pointers and object strides, in List layout per object. `Flat`: arrays of
// Contiguous objects lying back to back run as one vector.
template <class Op, int N, bool Align, bool Flat, Lay L, class D, class... W>
vorxStatus packedArray(const D& d, uint32_t count, W... w)
{
    auto before = [&] { (w.prepare(), ...); };
    auto loop = [&](auto aligned) {
        constexpr bool A = decltype(aligned)::value;
        auto one = [&](uint32_t k) {
            float* to = d.at(k, 0, 0);
            if constexpr (Align && L == Lay::L)
                if (sse::aligned16(to) && (w.alignedAt(k) && ...))
                    return store<N, true>(to, weigh<Op, N>(w.template at<true>(k)...));
            store<N, A>(to, weigh<Op, N>(w.template at<A>(k)...));
        };
        return eachObjectAt(count, one, w.v..., d);
    };
    auto objects = [&] {
        if constexpr (Flat)
            if (d.os == 4 * N && (w.tight() && ...) && count <= 0xffffffffu / N) {
                flat<Op>(d.x, count * N, w.run()...);
                return kOk;
            }
        if constexpr (Align && L == Lay::C)
            if (sse::aligned16(d.x) && (d.os & 15) == 0 && (w.aligned() && ...)) return loop(std::true_type{});
        return loop(std::false_type{});
    };
    return interleavedCall(false, N, count, before, objects, w.v..., d);
}

template <class Op, int N, int Single, bool Align, Lay L, size_t... I, class D, class... S>
vorxStatus packedArrayOf(std::index_sequence<I...>, const D& d, uint32_t count, const S&... s)
{
    return packedArray<Op, N, Align, Single == 0 && L == Lay::C, L>(d, count, regOperand<N, Single, I>(s)...);
}

template <class Op, int N, bool Align, class D, class... S>
vorxStatus packedSingle(const D& d, const S&... s)
{
    if (anyNull(s..., d)) return kNull;
    float* to = d.at(0, 0, 0);
    if constexpr (Align)
        if (sse::aligned16(to) && (alignedAt(s, 0) && ...)) {
            storeAligned<N>(to, weigh<Op, N>(take<N, true>(s, 0)...));
            return kOk;
        }
    weigh<Op, N>(take<N, false>(s, 0)...).store(to);
    return kOk;
}

// The choice of loop for a form: `Single` the source that is one vector in an array
// call (0: none); `AlignC`, `AlignL` the sizes (bit N) that branch on alignment in
// Contiguous and in List layout.
template <class Op, int Single, unsigned AlignC, unsigned AlignL, class T, int N, Lay L>
struct Forms {
    static constexpr bool packed = isF32<T> && N > 0 && adjacent(L);
    static constexpr bool align = (((L == Lay::C ? AlignC : L == Lay::L ? AlignL : 0u) >> N) & 1u) != 0;

    template <class D, class... S>
    static vorxStatus one(const D& d, uint32_t len, const S&... s)
    {
        if constexpr (packed) return packedSingle<Op, N, align>(d, s...);
        else if constexpr (isF32<T> && N == 0 && L == Lay::C) return streamed<Op>(d, len, s...);
        else return single<Op, N>(d, len, s...);
    }

    template <class D, class... S>
    static vorxStatus many(const D& d, uint32_t len, uint32_t count, const S&... s)
    {
        if constexpr (packed)
            return packedArrayOf<Op, N, Single, align, L>(std::index_sequence_for<S...>{}, d, count, s...);
        else
            return array<Op, N>(d, len, count, s...);
    }
};

}  // namespace weighted

// The family: (src1, scale, src2, dst) in saxpy, (src1, scale1, src2, scale2, dst)
// in the linear combination, then len and, in array calls, count.
template <class Op, int Single, unsigned AlignC = 0, unsigned AlignL = 0>
struct WeightedFamily {
    template <class T, int N, Lay L>
    struct Impl {
        using F = weighted::Forms<Op, Single, AlignC, AlignL, T, N, L>;
        template <class A, class B, class D>
        static vorxStatus run(A a, T c, B b, D d, uint32_t len) { return F::one(d, len, a, c, b); }
        template <class A, class B, class D>
        static vorxStatus run(A a, T c, B b, D d, uint32_t len, uint32_t count) { return F::many(d, len, count, a, c, b); }
        template <class A, class B, class D>
        static vorxStatus run(A a, T c, B b, T e, D d, uint32_t len) { return F::one(d, len, a, c, b, e); }
        template <class A, class B, class D>
        static vorxStatus run(A a, T c, B b, T e, D d, uint32_t len, uint32_t count)
        {
            return F::many(d, len, count, a, c, b, e);
        }
    };
};

// Sizes (as bits) whose Contiguous 32f forms choose aligned moves when the moving
// pointers and object strides allow; LComb vav also at size 4 in List layout.
constexpr unsigned alignedSizes(unsigned a, unsigned b = 0, unsigned c = 0) { return 1u << a | (b ? 1u << b : 0) | (c ? 1u << c : 0); }

namespace tag {
struct Saxpy_vv : WeightedFamily<SaxpyOp, 0> {};
struct Saxpy_vav : WeightedFamily<SaxpyOp, 2, alignedSizes(4, 6)> {};
struct Saxpy_vva : WeightedFamily<SaxpyOp, 1> {};
struct Saxpy_vava : WeightedFamily<SaxpyOp, 0, alignedSizes(4, 6)> {};
struct LComb_vv : WeightedFamily<LCombOp, 0, alignedSizes(4, 5, 6)> {};
struct LComb_vav : WeightedFamily<LCombOp, 2, alignedSizes(4, 5, 6), alignedSizes(4)> {};
struct LComb_vava : WeightedFamily<LCombOp, 0, alignedSizes(4, 5, 6)> {};
}  // namespace tag

}  // namespace vorx
