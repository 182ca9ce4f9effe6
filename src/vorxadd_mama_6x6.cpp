// Matrix addition of two arrays of matrices, either source possibly transposed, size
// 6x6: 32f and 64f, all layouts.
#include "elementwise/matrix.h"

namespace vorx {

// vorxAdd_mama_32f_6x6 leaves src2ObjectStride and dstObjectStride out of its
// alignment test: callers must keep them multiples of 16 whenever the rest is.
struct AlignButObjectStrides {
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
struct Body<tag::Add_mama, float, 6, Lay::C> : PackedRowsWith<AddOp, 6, 0, AlignButObjectStrides> {};

}  // namespace vorx

#include "vorxadd_mama_6x6.inc"
