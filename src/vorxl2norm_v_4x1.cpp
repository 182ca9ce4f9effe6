// L2 norm of one vector, length 4: 32f and 64f, Contiguous, Strided and Pointer layouts.
#include "vecalg/reduce.h"

namespace vorx {

// The estimate regime (the root of a zero vector is NaN), squares summed (p0+p1)+(p2+p3).
template <>
struct Body<tag::L2Norm_v, float, 4, Lay::C> : NormEstimated<4, lanes::Pairs4> {};

}  // namespace vorx

#include "vorxl2norm_v_4x1.inc"
