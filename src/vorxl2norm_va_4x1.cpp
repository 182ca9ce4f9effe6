// L2 norm of each vector of an array, length 4: 32f and 64f, all layouts.
#include "vecalg/reduce.h"

namespace vorx {

// The estimate regime, four objects a turn, squares summed ((p0+p1)+p2)+p3. The
// List form does not test the list entries of its remainder objects.
template <>
struct Body<tag::L2Norm_va, float, 4, Lay::C> : NormGroups<4, lanes::Chain4, lanes::Chain4> {};
template <>
struct Body<tag::L2Norm_va, float, 4, Lay::L> : NormGroups<4, lanes::Chain4, lanes::Chain4, true> {};

}  // namespace vorx

#include "vorxl2norm_va_4x1.inc"
