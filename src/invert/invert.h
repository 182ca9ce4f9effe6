// Matrix inversion, one object or an array, for both element types and every layout.
//
// Any size (2 and up): the adjugate through the determinant's elimination, in the
// caller's scratch (anysize.h). Fixed sizes need no buffer, and their scheme depends
// on size, type and layout together:
//   32f, layouts none and L    packed: closed 3x3 and 4x4; 5x5 and 6x6 by one or two
//                              pivot columns down to the packed 4x4 (packed.h)
//   32f, other layouts; 64f    closed 3x3 and 4x4; the 2+3 and 3+3 block partitions
//                              of 5x5 and 6x6 (closed.h), 64f on the x87 unit
// A singular object returns vorxStatusZeroDivide at once, earlier objects finished.
#pragma once

#include "invert/anysize.h"
#include "invert/closed.h"
#include "invert/packed.h"

namespace vorx {
namespace inv {

// The test of the first block of the 2+3 and 3+3 partitions (the 2x2 dP, or the 3x3
// block's determinant) rejects a NaN (notOutsideBand) in most members; the units
// name the members that take insideBand there and let a NaN through.
template <class Tag, class T, int N, Lay L>
struct FirstBlock {
    using Test = NotOutsideBand<T>;
};

template <class Tag, class T, int N, Lay L>
struct Fixed {
    static constexpr bool kPacked = sizeof(T) == 4 && adjacent(L);

    template <class S, class D>
    [[gnu::always_inline]] static inline bool object(const S& s, const D& d, uint32_t k)
    {
        if constexpr (kPacked) {
            auto src = [&](int i) { return s.row(k, i); };
            auto dst = [&](int i) { return d.row(k, i); };
            if constexpr (N == 3) return packed::inverse3(src, dst);
            else if constexpr (N == 4)
                return packed::inverse4(src, [&](sse::R m0, sse::R m1, sse::R m2, sse::R m3) {
                    sse::store4u(dst(0), m0);
                    sse::store4u(dst(1), m1);
                    sse::store4u(dst(2), m2);
                    sse::store4u(dst(3), m3);
                });
            else return packed::inversePivoted<N>(src, dst);
        } else {
            return closed(s.object(k), d.object(k));
        }
    }

    // Objects whose dst shares no byte with their source are read once into a local
    // copy, and the 4x4 adjugate waits in another until it is scaled into dst: no
    // element address is built more than once. Otherwise (and in the Pointer
    // layouts, whose elements lie anywhere) every read goes to the operands as the
    // stores leave them. Not the 64f 4x4: with its sources out of reach of its
    // stores, the compiler holds them across elements on the x87 unit and spills
    // them at register width, which costs more than the addresses it saves.
    static constexpr bool kLocal = N == 3 || sizeof(T) == 4;
    template <class SO, class DO>
    static bool apart(const SO& so, const DO& dob)
    {
        if constexpr (requires { so.extent(N, N); }) return so.extent(N, N).apart(dob.extent(N, N));
        else return false;
    }

    template <class SO, class DO>
    [[gnu::always_inline]] static inline bool closed(const SO& so, const DO& dob)
    {
        using A = det::OwnArith<T>;
        using V = typename A::V;
        auto put = [&](int i, int j, V v) { storeTo(dob.at(i, j), v); };
        T m[N][N];
        if constexpr (N <= 4) {
            if (kLocal && apart(so, dob)) {
                elim::takeObject(m, so);
                auto a = [&](int i, int j) { return m[i][j]; };
                if constexpr (N == 3) return inverse3<A, InsideBand<T>>(a, put);
                T adj[4][4];
                auto keep = [&](int i, int j, V v) { storeTo(&adj[i][j], v); };
                if (inverse4<A, InsideBand<T>>(a, keep, [&](int i, int j) { return adj[i][j]; }, put)) return true;
                elim::giveObject(dob, adj);
                return false;
            }
            auto a = [&](int i, int j) { return *so.at(i, j); };
            if constexpr (N == 3) return inverse3<A, InsideBand<T>>(a, put);
            else return inverse4<A, InsideBand<T>>(a, put, [&](int i, int j) { return *dob.at(i, j); }, put);
        } else {
            // The partitions address columns through a run-time table: the object
            // first into a local copy, bit for bit.
            elim::takeObject(m, so);
            return partitioned<A, T, N, typename FirstBlock<Tag, T, N, L>::Test>(
                [&](int i, int j) { return m[i][j]; }, put);
        }
    }

    template <class S, class D>
    static vorxStatus run(S s, D d, uint32_t)
    {
        if (anyNull(s, d)) return kNull;
        s = s.withShape(N, N);
        d = d.withShape(N, N);
        if (!pairsOk(s, d, N * N)) return kNull;
        return object(s, d, 0) ? kOk : kZeroDivide;
    }

    // The tables of the Pointer layouts and the lists of LS2 and 64f L are tested
    // whole before the count test; 32f L tests each object's shifted addresses, not
    // its entries, at its turn.
    template <class S, class D>
    static vorxStatus run(S s, D d, uint32_t, uint32_t count)
    {
        if (anyNull(s, d)) return kNull;
        s = s.withShape(N, N);
        d = d.withShape(N, N);
        if (!pairsOk(s, d, N * N)) return kNull;
        if constexpr (L == Lay::LS2 || (L == Lay::L && !kPacked))
            for (uint32_t n = 0; n < count; ++n)
                if (!s.entry(n) || !d.entry(n)) return kNull;
        for (uint32_t n = 0; n < count; ++n) {
            if constexpr (L == Lay::L && kPacked)
                if (!s.row(n, 0) || !d.row(n, 0)) return kNull;
            if (!object(s, d, n)) return kZeroDivide;
        }
        return kOk;
    }
};

template <class Tag>
struct Family {
    template <class T, int N, Lay L>
    using Impl = std::conditional_t<N == 0, AnySize<T>, Fixed<Tag, T, N, L>>;
};

}  // namespace inv

namespace tag {
struct Invert_m : inv::Family<Invert_m> {};
struct Invert_ma : inv::Family<Invert_ma> {};
}  // namespace tag

}  // namespace vorx
