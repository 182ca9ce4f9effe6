// Dot product of two vectors, length 4: 32f and 64f, Contiguous, Strided and Pointer layouts.
#include "vecalg/reduce.h"
#include "vorxdotproduct_vv_4x1.inc"
