// Matrix subtraction of an array of matrices and one matrix, either source possibly
// transposed, size 6x6: 32f and 64f, all layouts.
#include "elementwise/matrix.h"

namespace vorx {

// vorxSub_mam_32f_6x6 leaves dstObjectStride out of its alignment test: with all else
// on 16 bytes and that stride not, the aligned moves meet unaligned objects. Callers
// must keep it a multiple of 16 whenever the rest is.
struct AlignButSubDstObjectStride {
    static bool aligned(const Direct<const float>& a, const Direct<const float>& b, const Direct<float>& d,
                        uint32_t)
    {
        uintptr_t bits = reinterpret_cast<uintptr_t>(a.x) | static_cast<uint32_t>(a.os | a.rs) |
                         reinterpret_cast<uintptr_t>(b.x) | static_cast<uint32_t>(b.rs) |
                         reinterpret_cast<uintptr_t>(d.x) | static_cast<uint32_t>(d.rs);
        return (bits & 15) == 0;
    }
};
template <>
struct Body<tag::Sub_mam, float, 6, Lay::C> : PackedRowsWith<SubOp, 6, 2, AlignButSubDstObjectStride> {};

}  // namespace vorx

#include "vorxsub_mam_6x6.inc"
