// Matrix addition of two arrays of matrices, either source possibly transposed, size
// 4x4: 32f and 64f, all layouts.
#include "elementwise/matrix.h"

namespace vorx {

// vorxAdd_mama_32f_4x4_L tests src2's list entry without src2ByteShift: callers must
// keep that shift a multiple of 16 whenever the rest is.
struct AlignButSrc2ByteShift {
    static bool aligned(const ObjTable<const float>& a, const ObjTable<const float>& b,
                        const ObjTable<float>& d, uint32_t k)
    {
        uintptr_t bits = reinterpret_cast<uintptr_t>(byteAt(a.x[k], a.bs)) | static_cast<uint32_t>(a.rs) |
                         reinterpret_cast<uintptr_t>(b.x[k]) | static_cast<uint32_t>(b.rs) |
                         reinterpret_cast<uintptr_t>(byteAt(d.x[k], d.bs)) | static_cast<uint32_t>(d.rs);
        return (bits & 15) == 0;
    }
};
template <>
struct Body<tag::Add_mama, float, 4, Lay::L> : PackedRowsWith<AddOp, 4, 0, AlignButSrc2ByteShift> {};

}  // namespace vorx

#include "vorxadd_mama_4x4.inc"
