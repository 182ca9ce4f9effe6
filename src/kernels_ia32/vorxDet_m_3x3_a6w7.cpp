// Determinant kernels of one 3x3 matrix, 32f and 64f, on the x87 unit.
#include "kernels_ia32/det_x87.h"

namespace vorx::det {

// (B*a01 + C*a02) + A*a00
template <>
struct KernelForm<tag::a6_Det_m, float, 3, Lay::C> {
    template <class A, class E>
    [[gnu::always_inline]] static typename A::V det(const E& e)
    {
        Cofactors3<A> c(e);
        auto a = [&](int i, int j) { return typename A::V(e(i, j)); };
        return (c.B0 * a(0, 1) + c.C0 * a(0, 2)) + c.A0 * a(0, 0);
    }
};

// The one kernel that expands down the first column:
// ((a01*a12 - a02*a11)*a20 + A*a00) + (a02*a21 - a01*a22)*a10
template <>
struct KernelForm<tag::a6_Det_m, double, 3, Lay::C> {
    template <class A, class E>
    [[gnu::always_inline]] static typename A::V det(const E& e)
    {
        Cofactors3<A> c(e);
        auto a = [&](int i, int j) { return typename A::V(e(i, j)); };
        return ((a(0, 1) * a(1, 2) - a(0, 2) * a(1, 1)) * a(2, 0) + c.A0 * a(0, 0)) +
               (a(0, 2) * a(2, 1) - a(0, 1) * a(2, 2)) * a(1, 0);
    }
};

}  // namespace vorx::det

#include "vorxDet_m_3x3_a6w7.inc"
