// Determinant kernels of arrays of 5x5 matrices, 32f and 64f, Contiguous and List
// layouts, on the x87 unit: the expansion by minors of det/minors.h (the 32f minors
// kept in 32-bit temporaries are named by Narrow32 in det_x87.h). The List kernels
// trap at a null entry.
#include "kernels_ia32/det_x87.h"
#include "vorxDet_ma_5x5_a6w7.inc"
