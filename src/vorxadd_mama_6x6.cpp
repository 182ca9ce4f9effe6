// Matrix addition of two arrays of matrices, either source possibly transposed, size
// 6x6: 32f and 64f, all layouts.
#include "elementwise/matrix.h"

namespace vorx {

// vorxAdd_mama_32f_6x6 leaves src2ObjectStride and dstObjectStride out of its
// alignment test.
template <>
struct Body<tag::Add_mama, float, 6, Lay::C> : PackedRowsWith<AddOp, 6, 0, mat::AlignButLaterObjectStrides> {};

}  // namespace vorx

#include "vorxadd_mama_6x6.inc"
