// The cross product of 3-element vectors, one pair or arrays, both element types,
// every layout:
//   dst0 = a1*b2 - a2*b1,  dst1 = a2*b0 - a0*b2,  dst2 = a0*b1 - a1*b0.
// 32f rounds each product, then the difference; 64f keeps both at register width and
// rounds once at the store.
//
// 32f in Contiguous and List layouts reads all six inputs of an object before its
// first store, so dst may be a source. Every other form, all 64f ones included,
// stores each component as soon as it is computed from the sources as they then
// stand: in place, later components read what earlier ones wrote. There is no size
// check, and Pointer tables, even of one pair, are scanned before any store.
#pragma once

#include <type_traits>

#include "../frame/interleaved.h"
#include "lanes.h"

namespace vorx {
namespace cross {

using sse::R;

inline float diff(float a, float b, float c, float e) { return sse::mul(a, b) - sse::mul(c, e); }
inline R diff(R a, R b, R c, R e) { return _mm_sub_ps(sse::mul(a, b), sse::mul(c, e)); }
inline long double diff(double a, double b, double c, double e) { return wide(a) * wide(b) - wide(c) * wide(e); }

// Component c combines elements c+1 and c+2 (modulo 3) of both sources.
template <class T>
inline void put(T* d, T a1, T b2, T a2, T b1) { *d = static_cast<T>(diff(a1, b2, a2, b1)); }  // the store rounds once

// A source's objects: read from memory at each use, or held in registers (a single
// vector of an array call). Either way element j of object k is `*object(k).at(0, j)`.
template <class V>
struct Read {
    V v;
    void prepare() {}
    auto object(uint32_t k) const { return v.object(k); }
};
template <class V>
struct Hold {
    struct Held {
        const float* e;
        const float* at(uint32_t, uint32_t j) const { return e + j; }
    };
    V v;
    float e[3] = {};
    void prepare()
    {
        for (uint32_t j = 0; j < 3; ++j) e[j] = *v.at(0, 0, j);
        sse::keep(e);
    }
    Held object(uint32_t) const { return {e}; }
};

template <class A, class B, class D>
void stepwise(const A& a, const B& b, const D& d)
{
#pragma GCC unroll 3
    for (uint32_t c = 0; c < 3; ++c) {
        uint32_t i = (c + 1) % 3, j = (c + 2) % 3;
        put(d.at(0, c), *a.at(0, i), *b.at(0, j), *a.at(0, j), *b.at(0, i));
    }
}

template <class A, class B, class D>
void atOnce(const A& a, const B& b, const D& d)
{
    float x[3], y[3];
#pragma GCC unroll 3
    for (uint32_t j = 0; j < 3; ++j) {
        x[j] = *a.at(0, j);
        y[j] = *b.at(0, j);
    }
#pragma GCC unroll 3
    for (uint32_t c = 0; c < 3; ++c) {
        uint32_t i = (c + 1) % 3, j = (c + 2) % 3;
        put(d.at(0, c), x[i], y[j], x[j], y[i]);
    }
}

// Four objects a turn: each source transposed into three registers (one per
// component, lane q object q), the three differences, and back. Objects lying back
// to back in all three arrays move as three full registers each.
inline lanes::Four<3> crossed(const lanes::Four<3>& x, const lanes::Four<3>& y)
{
    return {{diff(x.x[1], y.x[2], x.x[2], y.x[1]), diff(x.x[2], y.x[0], x.x[0], y.x[2]),
             diff(x.x[0], y.x[1], x.x[1], y.x[0])}};
}

template <class A, class B>
void fourAtOnce(const A& a, const B& b, const Direct<float>& d, uint32_t k)
{
    auto in = [&](const auto& v) {
        return lanes::transpose<3>(VecReg<3>::load(v.at(k, 0, 0)), VecReg<3>::load(v.at(k + 1, 0, 0)),
                                   VecReg<3>::load(v.at(k + 2, 0, 0)), VecReg<3>::load(v.at(k + 3, 0, 0)));
    };
    lanes::Four<3> r = crossed(in(a), in(b));
    R d0 = r.x[0], z = sse::zero(), d1 = r.x[1], d2 = r.x[2];
    _MM_TRANSPOSE4_PS(d0, z, d1, d2);  // object q: d0, 0, d1, d2
    sse::store3(d.at(k, 0, 0), d0);
    sse::store3(d.at(k + 1, 0, 0), z);
    sse::store3(d.at(k + 2, 0, 0), d1);
    sse::store3(d.at(k + 3, 0, 0), d2);
}

inline void fourBackToBack(const float* a, const float* b, float* d)
{
    auto in = [](const float* p) { return lanes::packed3(sse::load4u(p), sse::load4u(p + 4), sse::load4u(p + 8)); };
    R d0, d1, d2;
    lanes::unpacked3(crossed(in(a), in(b)), d0, d1, d2);
    sse::store4u(d, d0);
    sse::store4u(d + 4, d1);
    sse::store4u(d + 8, d2);
}

}  // namespace cross

// `Single`: the source (1 or 2) that is one vector in an array call, held in
// registers from before the count test in the 32f Contiguous and List forms.
template <int Single>
struct CrossFamily {
    template <class T, int N, Lay L>
    struct Impl {
        static constexpr bool atOnce = isF32<T> && adjacent(L);

        template <class A, class B, class D>
        static void object(const A& a, const B& b, const D& d, uint32_t k)
        {
            if constexpr (atOnce) cross::atOnce(a.object(k), b.object(k), d.object(k));
            else cross::stepwise(a.object(k), b.object(k), d.object(k));
        }

        template <class A, class B, class D>
        static vorxStatus run(A a, B b, D d)
        {
            if (anyNull(a, b, d)) return kNull;
            if (!interleavedOk(3, a, b, d)) return kNull;
            object(cross::Read<A>{a}, cross::Read<B>{b}, d, 0);
            return kOk;
        }

        template <class A, class B, class D>
        static vorxStatus run(A a, B b, D d, uint32_t count)
        {
            using SA = std::conditional_t<atOnce && Single == 1, cross::Hold<A>, cross::Read<A>>;
            using SB = std::conditional_t<atOnce && Single == 2, cross::Hold<B>, cross::Read<B>>;
            SA sa{a};
            SB sb{b};
            auto before = [&] {
                sa.prepare();
                sb.prepare();
            };
            auto objects = [&] {
                uint32_t k = 0;
                if constexpr (atOnce && Single == 0 && L == Lay::C) {
                    if (a.os == 12 && b.os == 12 && d.os == 12)
                        for (; count - k >= 4; k += 4) cross::fourBackToBack(a.at(k, 0, 0), b.at(k, 0, 0), d.at(k, 0, 0));
                    for (; count - k >= 4; k += 4) cross::fourAtOnce(a, b, d, k);
                }
                for (; k < count; ++k) {
                    if (!listsOk(k, a, b, d)) return kNull;
                    object(sa, sb, d, k);
                }
                return kOk;
            };
            return interleavedCall(false, 3, count, before, objects, a, b, d);
        }
    };
};

namespace tag {
struct CrossProduct_vv : CrossFamily<0> {};
struct CrossProduct_vav : CrossFamily<2> {};
struct CrossProduct_vva : CrossFamily<1> {};
struct CrossProduct_vava : CrossFamily<0> {};
}  // namespace tag

}  // namespace vorx
