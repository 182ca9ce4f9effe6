// L2 norm of each vector of an array, length 6: 32f and 64f, all layouts.
#include "vecalg/reduce.h"

namespace vorx {

// The estimate regime, four objects a turn, squares summed ((p0+p2)+p4)+((p1+p3)+p5).
template <>
struct Body<tag::L2Norm_va, float, 6, Lay::C> : NormGroups<6, lanes::Strided6, lanes::Strided6> {};
template <>
struct Body<tag::L2Norm_va, float, 6, Lay::L> : NormGroups<6, lanes::Strided6, lanes::Strided6> {};

}  // namespace vorx

#include "vorxl2norm_va_6x1.inc"
