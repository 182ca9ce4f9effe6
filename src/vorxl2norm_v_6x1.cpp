// L2 norm of one vector, length 6: 32f and 64f, Contiguous, Strided and Pointer layouts.
#include "vecalg/reduce.h"

namespace vorx {

// The estimate regime (the root of a zero vector is NaN), squares summed ((p0+p1)+(p2+p3))+(p4+p5).
template <>
struct Body<tag::L2Norm_v, float, 6, Lay::C> : NormEstimated<6, lanes::Pairs6> {};

}  // namespace vorx

#include "vorxl2norm_v_6x1.inc"
