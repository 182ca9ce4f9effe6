// Matrix products of one matrix by one matrix, sizes given at run time: 32f and 64f, all layouts.
#include "products/matmul.h"

namespace vorx {

// vorxMul_mmT_32f and vorxMul_mmT_64f run the result columns over src2Height and
// the inner sum over src2Width, where every other form (their Strided and Pointer
// twins among them) runs them over src2Width and src2Height: on non-square data the
// Contiguous and the Strided forms write different shapes.
template <class T>
struct MulTransposedContiguous : tag::Mul_mmT::Impl<T, 0, Lay::C> {
    template <class A, class B, class D>
    static vorxStatus run(A a, uint32_t w1, uint32_t h1, B b, uint32_t w2, uint32_t h2, D d)
    {
        return tag::Mul_mmT::Impl<T, 0, Lay::C>::within(a, w1, h1, b, w2, h2, d, h2, w2);
    }
};

template <> struct Body<tag::Mul_mmT, float, 0, Lay::C> : MulTransposedContiguous<float> {};
template <> struct Body<tag::Mul_mmT, double, 0, Lay::C> : MulTransposedContiguous<double> {};

}  // namespace vorx

#include "vorxmul_mm.inc"
