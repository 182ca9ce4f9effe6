// Inversion of an array of 6x6 matrices: 32f and 64f, all layouts.
#include "invert/invert.h"

namespace vorx::inv {

// Three 64f arrays test the 3x3 block with insideBand, so that a NaN determinant
// of it passes on; the other 6x6 members reject it.
template <>
struct FirstBlock<tag::Invert_ma, double, 6, Lay::S2> {
    using Test = InsideBand<double>;
};
template <>
struct FirstBlock<tag::Invert_ma, double, 6, Lay::P> {
    using Test = InsideBand<double>;
};
template <>
struct FirstBlock<tag::Invert_ma, double, 6, Lay::LS2> {
    using Test = InsideBand<double>;
};

}  // namespace vorx::inv

#include "vorxinvert_ma_6x6.inc"
