// L2 norm of one vector, length given at run time: 32f and 64f, Contiguous, Strided and Pointer layouts.
#include "vecalg/reduce.h"

namespace vorx {

// vorxL2Norm_v_32f sums the squares by the eight-way scheme from 11 elements on,
// keyed on the address of src, and takes the exact root.
template <>
struct Body<tag::L2Norm_v, float, 0, Lay::C> {
    static vorxStatus run(Direct<const float> a, float* d, uint32_t len)
    {
        if (anyNull(a, reduce::results(d))) return kNull;
        if (len == 0) return kBadSize;
        *d = lanes::exactRoot(lanes::eightWay<true>(a.x, a.x, len));
        return kOk;
    }
};

}  // namespace vorx

#include "vorxl2norm_v.inc"
