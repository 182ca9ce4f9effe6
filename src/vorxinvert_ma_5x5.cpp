// Inversion of an array of 5x5 matrices: 32f and 64f, all layouts.
#include "invert/invert.h"

namespace vorx::inv {

// The 32f arrays outside the packed layouts test the 2x2 block with insideBand: a
// NaN dP passes on, where the single matrices and all 64f members reject it.
template <Lay L>
struct FirstBlock<tag::Invert_ma, float, 5, L> {
    using Test = InsideBand<float>;
};

}  // namespace vorx::inv

#include "vorxinvert_ma_5x5.inc"
