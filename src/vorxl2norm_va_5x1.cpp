// L2 norm of each vector of an array, length 5: 32f and 64f, all layouts.
#include "vecalg/reduce.h"

namespace vorx {

// The estimate regime, four objects a turn. The grouped objects sum their squares
// ((p0+p2)+(p1+p3))+p4, the remainder objects ((p0+p1)+(p2+p3))+p4.
template <>
struct Body<tag::L2Norm_va, float, 5, Lay::C> : NormGroups<5, lanes::Strided5, lanes::Pairs5> {};
template <>
struct Body<tag::L2Norm_va, float, 5, Lay::L> : NormGroups<5, lanes::Strided5, lanes::Pairs5> {};

}  // namespace vorx

#include "vorxl2norm_va_5x1.inc"
