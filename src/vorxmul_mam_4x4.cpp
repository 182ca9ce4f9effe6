// Matrix products of an array of matrices by one matrix, size 4x4: 32f and 64f, all layouts.
#include "products/matmul.h"

namespace vorx {

// vorxMul_mam_32f_4x4_S2 holds src2 (read whole ahead of the count test) and works
// a row at a time, so dst = src1 gives the product.
template <>
struct Body<tag::Mul_mam, float, 4, Lay::S2> {
    template <class A, class B, class D>
    static vorxStatus run(A a, uint32_t, uint32_t, B b, uint32_t, uint32_t, D d, uint32_t count)
    {
        return mul::Held<4, false>::run<true>(a, b, d, count);
    }
};

}  // namespace vorx

#include "vorxmul_mam_4x4.inc"
