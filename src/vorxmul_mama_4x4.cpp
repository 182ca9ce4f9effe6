// Matrix products of two arrays of matrices, size 4x4: 32f and 64f, all layouts.
#include "products/matmul.h"

namespace vorx {

// vorxMul_mama_32f_4x4_S2 reads each src2 object whole, then each src1 row
// whole before its result row is stored: dst = src1 and dst = src2 give the product.
template <> struct Body<tag::Mul_mama, float, 4, Lay::S2> : mul::HeldArray<4, false> {};

}  // namespace vorx

#include "vorxmul_mama_4x4.inc"
