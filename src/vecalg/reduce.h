// Dot products and L2 norms: one scalar per object, stored in a plain array of
// adjacent results whatever the layout of the sources.
//
// Sums run left to right from +0.0 unless a form names its own order: 32f rounds
// every product and partial sum, 64f keeps the sum (products included) at register
// width and rounds once at the store. Norms take the root of that sum: the
// single-precision root instruction in 32f (the exact regime), the extended root in
// 64f; the 32f fixed sizes in Contiguous and List layouts use the estimate regime and
// orders of their own, told in their units.
#pragma once

#include "../frame/interleaved.h"
#include "../frame/x87.h"
#include "lanes.h"

namespace vorx {
namespace reduce {

using sse::R;

// The results as a view: adjacent scalars, whatever the layout.
template <class T>
Direct<T> results(T* d) { return {d, static_cast<int32_t>(sizeof(T)), 0, static_cast<int32_t>(sizeof(T))}; }

// A running sum of products.
template <class T> struct Acc;
template <>
struct Acc<float> {
    float s = 0.0f;
    void add(uint32_t, float x, float y) { s = sse::add(s, sse::mul(x, y)); }
    float sum() const { return s; }
    float root() const { return lanes::exactRoot(s); }
};
// Term j of the sum. 64f starts from the first product and has a zero dot
// product's sign mended as it is stored (`mendZeroStart`); a sum of squares is
// never -0.0.
template <>
struct Acc<double> {
    long double s = 0;
    void add(uint32_t j, double x, double y) { s = j ? s + wide(x) * wide(y) : wide(x) * wide(y); }
    long double sum() const { return s; }
    long double root() const { return __builtin_sqrtl(s); }
};

// One object into `out`, from each source's object (`object(k)`); Norm: the root of
// the sum of squares. `Test`: a single-object Pointer call tests each entry just
// before it reads through it (src1's, then src2's) and stores its result only at the
// end, so a null entry leaves dst as it was.
template <class T, int N, bool Norm, bool Test, class... O>
bool objectSum(T& out, uint32_t len, const O&... o)
{
    Acc<T> s;
#pragma GCC unroll 6
    for (uint32_t j = 0; j < (N ? N : len); ++j) {
        if (Test && !(readOk(o, 0, j) && ...)) return false;
        const T x[] = {*o.at(0, j)...};
        s.add(j, x[0], x[sizeof...(O) - 1]);
    }
    out = static_cast<T>(Norm ? s.root() : s.sum());  // 64f: the store rounds once
    if constexpr (sizeof(T) == 8 && !Norm) mendZeroStart(&out);
    return true;
}

template <class T, int N, bool Norm, class... V>
vorxStatus single(T* d, uint32_t len, const V&... v)
{
    if (anyNull(v..., results(d))) return kNull;
    if (N == 0 && len == 0) return kBadSize;
    T r;
    if (!objectSum<T, N, Norm, true>(r, len, v.object(0)...)) return kNull;
    *d = r;
    return kOk;
}

template <class T, int N, bool Norm, class... V>
vorxStatus array(T* d, uint32_t len, uint32_t count, const V&... v)
{
    auto object = [&](uint32_t k) { objectSum<T, N, Norm, false>(d[k], len, v.object(k)...); };
    auto objects = [&] { return eachObjectAt(count, object, v...); };
    return interleavedCall(N == 0 && len == 0, len, count, nothing, objects, v..., results(d));
}

// Objects in groups of four while four remain: the list entries of a group's four
// objects tested together at its start, then its four results stored as one vector
// (aligned where dst is on 16 bytes). The rest one by one, each with its list
// entries tested unless the form leaves them untested (`Gap`).
template <bool Gap, class Group, class One, class... O>
vorxStatus groups(float* d, uint32_t count, Group group, One one, const O&... o)
{
    const bool aligned = sse::aligned16(d);
    uint32_t k = 0;
    for (; count - k >= 4; k += 4) {
        for (uint32_t q = 0; q < 4; ++q)
            if (!listsOk(k + q, o...)) return kNull;
        R r = group(k);
        if (aligned) sse::store4a(d + k, r);
        else sse::store4u(d + k, r);
    }
    for (; k < count; ++k) {
        if (!Gap && !listsOk(k, o...)) return kNull;
        d[k] = one(k);
    }
    return kOk;
}

// The second factor of a packed dot product: object k of an array, or one vector
// loaded ahead of the count test and held in registers.
template <int N, class V>
struct Factor {
    V v;
    void prepare() {}
    VecReg<N> reg(uint32_t k) const { return lanes::load<N>(v.at(k, 0, 0)); }
};
template <int N, class V>
struct HeldFactor {
    V v;
    VecReg<N> r{};
    void prepare()
    {
        r = lanes::load<N>(v.at(0, 0, 0));
        sse::keep(r);
    }
    VecReg<N> reg(uint32_t) const { return r; }
};

// Both factors Contiguous arrays (objects may lie back to back).
template <class A, class F> struct Backed { static constexpr bool value = false; };
template <int N> struct Backed<Direct<const float>, Factor<N, Direct<const float>>> { static constexpr bool value = true; };

// Packed 32f dot products of N elements: `Grouped` four objects a turn in lanes with
// the order `Group`, the rest (or all, ungrouped) one by one with the order `One`.
template <int N, bool Grouped, bool Gap, class Group, class One, class A, class F>
vorxStatus dotsBy(const A& a, F f, float* d, uint32_t count)
{
    auto product = [&](uint32_t k) {
        return VecReg<N>::template op<lanes::MulOp>(lanes::load<N>(a.at(k, 0, 0)), f.reg(k));
    };
    auto group = [&](uint32_t k) {
        return Group::of(lanes::transpose<N>(product(k), product(k + 1), product(k + 2), product(k + 3)).x);
    };
    auto one = [&](uint32_t k) {  // the products of each lane are those of scalar operations
        float p[N];
        lanes::scalars<N>(product(k), p);
        return One::of(p);
    };
    // 3-element objects back to back in both arrays: three full moves for four objects.
    auto tight = [&](uint32_t k) {
        const float *x = a.at(k, 0, 0), *y = f.v.at(k, 0, 0);
        return Group::of(lanes::packed3(sse::mul(sse::load4u(x), sse::load4u(y)), sse::mul(sse::load4u(x + 4), sse::load4u(y + 4)),
                                        sse::mul(sse::load4u(x + 8), sse::load4u(y + 8))).x);
    };
    auto objects = [&] {
        if constexpr (Grouped && N == 3 && Backed<A, F>::value)
            if (a.os == 12 && f.v.os == 12) return groups<Gap>(d, count, tight, one, a, f.v);
        if constexpr (Grouped) return groups<Gap>(d, count, group, one, a, f.v);
        else return eachObjectAt(count, [&](uint32_t k) { d[k] = one(k); }, a, f.v);
    };
    return interleavedCall(false, N, count, [&] { f.prepare(); }, objects, a, f.v, results(d));
}

template <int N, bool Grouped, bool Gap, class Group, class One, int Single, class A, class B>
vorxStatus packedDots(const A& a, const B& b, float* d, uint32_t count)
{
    if constexpr (Single == 2) return dotsBy<N, Grouped, Gap, Group, One>(a, HeldFactor<N, B>{b}, d, count);
    else return dotsBy<N, Grouped, Gap, Group, One>(a, Factor<N, B>{b}, d, count);
}

}  // namespace reduce

// The family of the dot product. Fixed-size 32f arrays in Contiguous layout go four
// objects a turn in lanes with the plain order (nothing tells them from one by one);
// in List layout one by one. A single src2 is held in registers there.
template <int Single>
struct DotFamily {
    template <class T, int N, Lay L>
    struct Impl {
        template <class A, class B>
        static vorxStatus run(A a, B b, T* d, uint32_t len)
        {
            return reduce::single<T, N, false>(d, len, a, b);
        }
        template <class A, class B>
        static vorxStatus run(A a, B b, T* d, uint32_t len, uint32_t count)
        {
            if constexpr (isF32<T> && N > 0 && adjacent(L))
                return reduce::packedDots<N, L == Lay::C, false, lanes::LeftToRight<N>, lanes::LeftToRight<N>, Single>(
                    a, b, d, count);
            else
                return reduce::array<T, N, false>(d, len, count, a, b);
        }
    };
};

// Arrays of 32f vectors of N elements against one vector held in registers, four
// objects a turn in lanes and the rest one by one, each summed in the order `Sum`.
template <int N, class Sum, bool Gap = false>
struct DotGroups {
    template <class A, class B>
    static vorxStatus run(A a, B b, float* d, uint32_t, uint32_t count)
    {
        return reduce::packedDots<N, true, Gap, Sum, Sum, 2>(a, b, d, count);
    }
};

// The family of the L2 norm in the exact regime; the estimate regime of the 32f fixed
// sizes in Contiguous and List layouts is in their units (NormEstimated, NormGroups).
struct NormFamily {
    template <class T, int N, Lay L>
    struct Impl {
        template <class A>
        static vorxStatus run(A a, T* d, uint32_t len)
        {
            return reduce::single<T, N, true>(d, len, a);
        }
        template <class A>
        static vorxStatus run(A a, T* d, uint32_t len, uint32_t count)
        {
            return reduce::array<T, N, true>(d, len, count, a);
        }
    };
};

// One 32f vector of N elements in the estimate regime, its squares summed in the order `Sum`.
template <int N, class Sum>
struct NormEstimated {
    static vorxStatus run(Direct<const float> a, float* d, uint32_t)
    {
        if (anyNull(a, reduce::results(d))) return kNull;
        float p[N];
        for (uint32_t j = 0; j < N; ++j) p[j] = sse::mul(a.x[j], a.x[j]);
        *d = lanes::estimatedRoot(Sum::of(p));
        return kOk;
    }
};

// Arrays of 32f vectors of N elements in the estimate regime: four objects a turn
// transposed into lanes, so that four sums, estimates and Newton steps run at once
// and one vector of four results is stored; the rest one by one through the scalar
// form. `Group` and `One` are the orders of the squares' sums of each.
template <int N, class Group, class One, bool Gap = false>
struct NormGroups {
    template <class A>
    static vorxStatus run(A a, float* d, uint32_t, uint32_t count)
    {
        auto squares = [&](uint32_t k) {
            VecReg<N> x = lanes::load<N>(a.at(k, 0, 0));
            return VecReg<N>::template op<lanes::MulOp>(x, x);
        };
        auto group = [&](uint32_t k) {
            return lanes::estimatedRoot(Group::of(lanes::transpose<N>(squares(k), squares(k + 1), squares(k + 2), squares(k + 3)).x));
        };
        auto one = [&](uint32_t k) {  // the scalar form: scalar sums, estimate and Newton step
            float p[N];
            lanes::scalars<N>(squares(k), p);
            return lanes::estimatedRoot(One::of(p));
        };
        // 3-element objects back to back: three full moves for four objects.
        auto tight = [&](uint32_t k) {
            const float* x = a.at(k, 0, 0);
            sse::R a0 = sse::load4u(x), a1 = sse::load4u(x + 4), a2 = sse::load4u(x + 8);
            return lanes::estimatedRoot(Group::of(lanes::packed3(sse::mul(a0, a0), sse::mul(a1, a1), sse::mul(a2, a2)).x));
        };
        auto objects = [&] {
            if constexpr (N == 3 && __is_same(A, Direct<const float>))
                if (a.os == 12) return reduce::groups<Gap>(d, count, tight, one, a);
            return reduce::groups<Gap>(d, count, group, one, a);
        };
        return interleavedCall(false, N, count, nothing, objects, a, reduce::results(d));
    }
};

namespace tag {
struct DotProduct_vv : DotFamily<0> {};
struct DotProduct_vav : DotFamily<2> {};
struct DotProduct_vava : DotFamily<0> {};
struct L2Norm_v : NormFamily {};
struct L2Norm_va : NormFamily {};
}  // namespace tag

}  // namespace vorx
