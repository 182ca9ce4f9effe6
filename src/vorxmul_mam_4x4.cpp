// Matrix products of an array of matrices by one matrix, size 4x4: 32f and 64f, all layouts.
#include "products/matmul.h"

namespace vorx {

// vorxMul_mam_32f_4x4_S2 holds src2 (read whole ahead of the count test) and works
// a row at a time, so dst = src1 gives the product.
template <> struct Body<tag::Mul_mam, float, 4, Lay::S2> : mul::HeldArray<4, true> {};

}  // namespace vorx

#include "vorxmul_mam_4x4.inc"
