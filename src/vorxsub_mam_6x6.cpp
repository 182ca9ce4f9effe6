// Matrix subtraction of an array of matrices and one matrix, either source possibly
// transposed, size 6x6: 32f and 64f, all layouts.
#include "elementwise/matrix.h"

namespace vorx {

// vorxSub_mam_32f_6x6 leaves dstObjectStride out of its alignment test.
template <>
struct Body<tag::Sub_mam, float, 6, Lay::C> : PackedRowsWith<SubOp, 6, 2, mat::AlignButLaterObjectStrides> {};

}  // namespace vorx

#include "vorxsub_mam_6x6.inc"
