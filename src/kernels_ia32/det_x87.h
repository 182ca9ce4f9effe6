// The determinant kernels of this processor variant: the fixed sizes of the layouts
// none and L, run on the x87 unit whatever the element type. 32f elements load
// exactly, products and sums stay at register width, and the result is rounded to
// single by its store, apart from the minors of Narrow32 below, which go through a
// 32-bit temporary. 64f keeps every minor at register width, rounded by the store
// of the result alone.
//
// A kernel checks nothing of its own: its wrapper has tested src and dst, and at
// count 0 its loop is simply not entered. A List kernel tests src[n] before
// object n (AtNullEntry). Each reads its whole object before the one store.
#pragma once

#include "det/minors.h"
#include "frame/checks.h"

namespace vorx::det {

// The minors that pass through a 32-bit temporary in the 32f kernels, by order and
// column set (the rows are always the bottom ones):
//   4x4  the order-2 minor on columns {0, 1}: 1 of the 10 minors;
//   5x5  every order-2 minor and the order-3 minors whose set holds column 0
//        ({0,1,2} {0,1,3} {0,1,4} {0,2,3} {0,2,4} {0,3,4}): 16 of the 20 of orders 2, 3;
//   6x6  every order-2 and order-3 minor and the order-4 minors whose set holds
//        column 0: 45 of the 50 of orders 2 to 4.
// The order-4 minors of 5x5, the order-5 minors of 6x6, the other order-3 minors of
// 5x5 and the order-4 minors of 6x6 without column 0 stay at register width.
template <int N>
struct Narrow32 {
    static constexpr bool at(int order, unsigned set)
    {
        if constexpr (N == 4) return order == 2 && set == 0x3;
        else return order < N - 2 || (order == N - 2 && (set & 1));
    }
};

template <class T, int N>
using KernelArith = std::conditional_t<sizeof(T) == 4, X87<Narrow32<N>>, X87<>>;

// The closed form of a kernel. Every 3x3 kernel adds its cofactors in an order of
// its own, given beside it in its unit.
template <class Tag, class T, int N, Lay L>
struct KernelForm {
    template <class A, class E>
    [[gnu::always_inline]] static typename A::V det(const E& a) { return byMinors<A, N>(a); }
};

// What a List kernel does at a null entry of its list: it leaves by an exit that
// does not come back to the wrapper, a trap at that object with the objects before
// it written. The one kernel that returns -2 instead says so in its unit.
template <class T, int N>
struct AtNullEntry {
    static vorxStatus stop() { __builtin_trap(); }
};

template <class Tag, class T, int N, Lay L>
struct KernelBody {
    using A = KernelArith<T, N>;

    template <class S>
    [[gnu::always_inline]] static typename A::V object(const S& s, uint32_t k)
    {
        return KernelForm<Tag, T, N, L>::template det<A>(Elements{s, k});
    }
    template <class S>
    static vorxStatus run(S s, T* dst, uint32_t)
    {
        *dst = static_cast<T>(object(s, 0));
        return kOk;
    }
    template <class S>
    static vorxStatus run(S s, T* dst, uint32_t, uint32_t count)
    {
        for (uint32_t n = 0; n < count; ++n) {
            if constexpr (L == Lay::L)
                if (!s.entry(n)) return AtNullEntry<T, N>::stop();
            dst[n] = static_cast<T>(object(s, n));
        }
        return kOk;
    }
};

}  // namespace vorx::det

namespace vorx::tag {
struct a6_Det_m {
    template <class T, int N, Lay L>
    using Impl = det::KernelBody<a6_Det_m, T, N, L>;
};
struct a6_Det_ma {
    template <class T, int N, Lay L>
    using Impl = det::KernelBody<a6_Det_ma, T, N, L>;
};
}  // namespace vorx::tag
