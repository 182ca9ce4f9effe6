// Dot product of an array of vectors and one vector, length 3: 32f and 64f, all layouts.
#include "vecalg/reduce.h"

namespace vorx {

// Four objects a turn against src2 held in registers, left to right from +0.0. The
// List form tests a group's four list entries at its start and does not test those
// of the remainder objects at all.
template <>
struct Body<tag::DotProduct_vav, float, 3, Lay::C> : DotGroups<3, lanes::LeftToRight<3>> {};
template <>
struct Body<tag::DotProduct_vav, float, 3, Lay::L> : DotGroups<3, lanes::LeftToRight<3>, true> {};

}  // namespace vorx

#include "vorxdotproduct_vav_3x1.inc"
