// Dot product of two vectors, length 5: 32f and 64f, Contiguous, Strided and Pointer layouts.
#include "vecalg/reduce.h"
#include "vorxdotproduct_vv_5x1.inc"
