// Determinant kernels of arrays of 6x6 matrices, 32f and 64f, Contiguous and List
// layouts, on the x87 unit: the expansion by minors of det/minors.h (the 32f minors
// kept in 32-bit temporaries are named by Narrow32 in det_x87.h).
#include "kernels_ia32/det_x87.h"

namespace vorx::det {

// Of the eight List kernels this one alone comes back from a null entry: it returns
// -2, which its wrapper reports as a null pointer. The 32f one traps.
template <>
struct AtNullEntry<double, 6> {
    static vorxStatus stop() { return -2; }
};

}  // namespace vorx::det

#include "vorxDet_ma_6x6_a6w7.inc"
