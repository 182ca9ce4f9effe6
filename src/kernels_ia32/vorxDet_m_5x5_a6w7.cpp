// Determinant kernels of one 5x5 matrix, 32f and 64f, on the x87 unit: the
// expansion by minors of det/minors.h (the 32f minors kept in 32-bit temporaries are
// named by Narrow32 in det_x87.h).
#include "kernels_ia32/det_x87.h"
#include "vorxDet_m_5x5_a6w7.inc"
