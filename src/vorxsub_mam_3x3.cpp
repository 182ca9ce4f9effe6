// Matrix subtraction of an array of matrices and one matrix, either source possibly
// transposed, size 3x3: 32f and 64f, all layouts.
#include "elementwise/matrix.h"

namespace vorx {

// The 32f mam and mamT forms in Contiguous and List layouts run as a software
// pipeline with no zero test in front: at count 0 they compute and store one object
// (in List layout through dst[-1]), and the List forms test their entries out of step
// with the objects.
template <>
struct Body<tag::Sub_mam, float, 3, Lay::C> : Pipelined3x3<SubOp> {};
template <>
struct Body<tag::Sub_mam, float, 3, Lay::L> : Pipelined3x3<SubOp> {};

// mamT also steps the rows of src2 with src1RowStride; src2RowStride is unread.
template <>
struct Body<tag::Sub_mamT, float, 3, Lay::C> : Pipelined3x3<SubOp, Src2AtSrc1Stride> {};
template <>
struct Body<tag::Sub_mamT, float, 3, Lay::L> : Pipelined3x3<SubOp, Src2AtSrc1Stride> {};

}  // namespace vorx

#include "vorxsub_mam_3x3.inc"
