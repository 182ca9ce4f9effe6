// Determinant kernels of arrays of 3x3 matrices, 32f and 64f, Contiguous and List
// layouts, on the x87 unit.
#include "kernels_ia32/det_x87.h"

namespace vorx::det {

// Contiguous: (C*a02 + A*a00) + B*a01
template <class T>
struct KernelForm<tag::a6_Det_ma, T, 3, Lay::C> {
    template <class A, class E>
    [[gnu::always_inline]] static typename A::V det(const E& e)
    {
        Cofactors3<A> c(e);
        auto a = [&](int i, int j) { return typename A::V(e(i, j)); };
        return (c.C0 * a(0, 2) + c.A0 * a(0, 0)) + c.B0 * a(0, 1);
    }
};

// List: (C*a02 + B*a01) + A*a00
template <class T>
struct KernelForm<tag::a6_Det_ma, T, 3, Lay::L> {
    template <class A, class E>
    [[gnu::always_inline]] static typename A::V det(const E& e)
    {
        Cofactors3<A> c(e);
        auto a = [&](int i, int j) { return typename A::V(e(i, j)); };
        return (c.C0 * a(0, 2) + c.B0 * a(0, 1)) + c.A0 * a(0, 0);
    }
};

}  // namespace vorx::det

#include "vorxDet_ma_3x3_a6w7.inc"
