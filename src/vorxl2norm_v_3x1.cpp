// L2 norm of one vector, length 3: 32f and 64f, Contiguous, Strided and Pointer layouts.
#include "vecalg/reduce.h"

namespace vorx {

// The estimate regime (the root of a zero vector is NaN), squares summed (p0+p1)+p2.
template <>
struct Body<tag::L2Norm_v, float, 3, Lay::C> : NormEstimated<3, lanes::Sum3> {};

}  // namespace vorx

#include "vorxl2norm_v_3x1.inc"
