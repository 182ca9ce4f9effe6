// Transpose of an array of matrices, size 5x5: 32f and 64f, all layouts.
#include "shape/transpose.h"

namespace vorx {

// The Contiguous 32f array moves one element at a time where its List twin moves
// tiles: the same results, but with dst on src it gives what the element-by-element
// forms give.
template <>
struct Body<tag::Transpose_ma, float, 5, Lay::C> : transpose::Impl<float, 0, Lay::C> {};

}  // namespace vorx

#include "vorxtranspose_ma_5x5.inc"
