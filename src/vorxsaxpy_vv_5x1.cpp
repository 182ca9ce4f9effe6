// Saxpy of two vectors, length 5: 32f and 64f, Contiguous, Strided and Pointer layouts.
#include "vecalg/weighted.h"
#include "vorxsaxpy_vv_5x1.inc"
