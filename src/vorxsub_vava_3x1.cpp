// Vector subtraction of two arrays of vectors, length 3: 32f and 64f, all layouts.
#include "elementwise/vector.h"

namespace vorx {

// vorxSub_vava_32f_3x1 streams: four objects a pass while four remain, prefetching
// 64 bytes ahead in both sources, then the rest one at a time. Each object is the
// same packed subtraction as elsewhere. A dense run is one pass, as in every form.
template <>
struct Body<tag::Sub_vava, float, 3, Lay::C> {
    static vorxStatus run(Direct<const float> a, Direct<const float> b, Direct<float> d,
                          uint32_t, uint32_t count)
    {
        if (anyNull(a, b, d)) return kNull;
        if (count && dense::run<SubOp, 3, 0>(a, b, d, 1, 3, count)) return kOk;
        auto x = a.first();
        auto y = b.first();
        auto z = d.first();
        auto one = [&] {
            VecReg<3>::op<SubOp>(fetch<3>(x.obj()), fetch<3>(y.obj())).store(z.obj().row(0));
            x.next();
            y.next();
            z.next();
        };
        uint32_t k = 0;
        for (; count - k >= 4; k += 4) {
            sse::prefetchNta(byteAt(x.p, 64));
            sse::prefetchNta(byteAt(y.p, 64));
            one();
            one();
            one();
            one();
        }
        for (; k < count; ++k) one();
        return kOk;
    }
};

}  // namespace vorx

#include "vorxsub_vava_3x1.inc"
