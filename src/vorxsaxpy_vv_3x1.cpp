// Saxpy of two vectors, length 3: 32f and 64f, Contiguous, Strided and Pointer layouts.
#include "vecalg/weighted.h"
#include "vorxsaxpy_vv_3x1.inc"
