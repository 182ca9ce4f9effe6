// Dot product of an array of vectors and one vector, length 4: 32f and 64f, all layouts.
#include "vecalg/reduce.h"

namespace vorx {

// Four objects a turn against src2 held in registers; every object, grouped or not,
// sums (p0+p1)+(p2+p3). The List form tests a group's four list entries at its start
// and does not test those of the remainder objects at all.
template <>
struct Body<tag::DotProduct_vav, float, 4, Lay::C> : DotGroups<4, lanes::Pairs4> {};
template <>
struct Body<tag::DotProduct_vav, float, 4, Lay::L> : DotGroups<4, lanes::Pairs4, true> {};

}  // namespace vorx

#include "vorxdotproduct_vav_4x1.inc"
