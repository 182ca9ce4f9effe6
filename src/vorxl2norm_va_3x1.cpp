// L2 norm of each vector of an array, length 3: 32f and 64f, all layouts.
#include "vecalg/reduce.h"

namespace vorx {

// The estimate regime, four objects a turn, squares summed (p0+p1)+p2.
template <>
struct Body<tag::L2Norm_va, float, 3, Lay::C> : NormGroups<3, lanes::Sum3, lanes::Sum3> {};
template <>
struct Body<tag::L2Norm_va, float, 3, Lay::L> : NormGroups<3, lanes::Sum3, lanes::Sum3> {};

}  // namespace vorx

#include "vorxl2norm_va_3x1.inc"
