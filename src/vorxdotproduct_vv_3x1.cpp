// Dot product of two vectors, length 3: 32f and 64f, Contiguous, Strided and Pointer layouts.
#include "vecalg/reduce.h"
#include "vorxdotproduct_vv_3x1.inc"
