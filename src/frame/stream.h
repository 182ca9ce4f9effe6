// The fast path of the run-time 32f Contiguous forms that take one vector (and a
// second one, or values): sum and difference, multiplication by a constant, the
// weighted sums. Written once; each family gives its arithmetic as an `Op` with a
// scalar form `s(...)` and a four-lane form `p(...)` of the same operation.
//
//   1. Below 11 elements, or where dst overlaps a source vector (half-open byte
//      ranges: each start below the other's end), or with dst not on 4 bytes: the
//      plain ascending loop, so an element written earlier is read as written.
//   2. Else the plain loop up to the first 16-byte aligned dst element (at most 3),
//   3. then 8 elements a turn in two four-lane steps with aligned stores and a
//      non-temporal prefetch 64 bytes ahead in each source vector,
//   4. and the rest, fewer than 8, one by one.
// A source vector is read unaligned (`Loose`) or, by a choice made once at the first
// aligned dst element, aligned or unaligned (`Keyed`); a value is broadcast once.
#pragma once

#include "sse.h"

namespace vorx::stream {

using sse::R;

struct Loose {
    const float* p;
    float at(uint32_t j) const { return p[j]; }
    template <bool A> R load(uint32_t j) const { return sse::load4u(p + j); }
    void prefetch(uint32_t j) const { sse::prefetchNta(p + j + 16); }
    bool overlaps(const float* d, uint32_t len) const { return d < p + len && p < d + len; }
    bool aligned(uint32_t) const { return false; }
};
struct Keyed : Loose {
    template <bool A> R load(uint32_t j) const { return A ? sse::load4a(p + j) : sse::load4u(p + j); }
    bool aligned(uint32_t j) const { return sse::aligned16(p + j); }
};
struct Value {
    float v;
    R r;
    explicit Value(float x) : v(x), r(sse::broadcast(x)) {}
    float at(uint32_t) const { return v; }
    template <bool A> R load(uint32_t) const { return r; }
    void prefetch(uint32_t) const {}
    bool overlaps(const float*, uint32_t) const { return false; }
    bool aligned(uint32_t) const { return false; }
};

template <class Op, bool A, class... S>
void packedFrom(float* d, uint32_t& j, uint32_t len, const S&... s)
{
    for (; len - j >= 8; j += 8) {
        (s.prefetch(j), ...);
        sse::store4a(d + j, Op::p(s.template load<A>(j)...));
        sse::store4a(d + j + 4, Op::p(s.template load<A>(j + 4)...));
    }
}

template <class Op, class... S>
void run(float* d, uint32_t len, const S&... s)
{
    auto plain = [&](uint32_t from, uint32_t to) {
        for (uint32_t j = from; j < to; ++j) d[j] = Op::s(s.at(j)...);
    };
    uintptr_t mis = reinterpret_cast<uintptr_t>(d) & 15;
    if (len < 11 || (s.overlaps(d, len) || ...) || (mis & 3) != 0) {
        plain(0, len);
        return;
    }
    uint32_t j = mis ? static_cast<uint32_t>(16 - mis) / 4 : 0;
    plain(0, j);
    if ((s.aligned(j) || ...)) packedFrom<Op, true>(d, j, len, s...);
    else packedFrom<Op, false>(d, j, len, s...);
    plain(j, len);
}

}  // namespace vorx::stream
