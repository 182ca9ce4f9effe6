// Dot product of two arrays of vectors, length 3: 32f and 64f, all layouts.
#include "vecalg/reduce.h"

namespace vorx {

// vorxDotProduct_vava_32f_3x1 with src1, src2, dst and both object strides on 16
// bytes takes four objects a turn, each as one aligned full register (the word after
// the object is read and left out), and sums (p0+p2)+p1; otherwise, and for the
// remainder objects, left to right from +0.0.
template <>
struct Body<tag::DotProduct_vava, float, 3, Lay::C> {
    static vorxStatus run(Direct<const float> a, Direct<const float> b, float* d, uint32_t len, uint32_t count)
    {
        bool aligned = sse::aligned16(a.x) && sse::aligned16(b.x) && sse::aligned16(d) && ((a.os | b.os) & 15) == 0;
        if (!aligned) return DotFamily<0>::Impl<float, 3, Lay::C>::run(a, b, d, len, count);
        auto product = [&](uint32_t k) {  // p0, p1, p2, (past the object)
            return VecReg<4>{sse::mul(sse::load4a(a.at(k, 0, 0)), sse::load4a(b.at(k, 0, 0)))};
        };
        auto group = [&](uint32_t k) {
            return lanes::Outer3::of(lanes::transpose<4>(product(k), product(k + 1), product(k + 2), product(k + 3)).x);
        };
        auto one = [&](uint32_t k) {
            float p[3];
            for (uint32_t j = 0; j < 3; ++j) p[j] = sse::mul(*a.at(k, 0, j), *b.at(k, 0, j));
            return lanes::LeftToRight<3>::of(p);
        };
        auto objects = [&] { return reduce::groups<false>(d, count, group, one, a, b); };
        return interleavedCall(false, 3, count, nothing, objects, a, b, reduce::results(d));
    }
};

}  // namespace vorx

#include "vorxdotproduct_vava_3x1.inc"
