// Dot product of two vectors, length 6: 32f and 64f, Contiguous, Strided and Pointer layouts.
#include "vecalg/reduce.h"
#include "vorxdotproduct_vv_6x1.inc"
