// Dot product of two vectors, length given at run time: 32f and 64f, Contiguous, Strided and Pointer layouts.
#include "vecalg/reduce.h"

namespace vorx {

// vorxDotProduct_vv_32f sums by the eight-way scheme from 11 elements on, keyed on
// the address of src2: two calls with the same values at different addresses may
// differ in the last bits.
template <>
struct Body<tag::DotProduct_vv, float, 0, Lay::C> {
    static vorxStatus run(Direct<const float> a, Direct<const float> b, float* d, uint32_t len)
    {
        if (anyNull(a, b, reduce::results(d))) return kNull;
        if (len == 0) return kBadSize;
        *d = lanes::eightWay<false>(a.x, b.x, len);
        return kOk;
    }
};

}  // namespace vorx

#include "vorxdotproduct_vv.inc"
