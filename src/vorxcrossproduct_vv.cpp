// Cross product of two vectors, length 3: 32f and 64f, Contiguous, Strided and Pointer layouts.
#include "vecalg/cross.h"
#include "vorxcrossproduct_vv.inc"
