// Linear combination of two vectors, length 3: 32f and 64f, Contiguous, Strided and Pointer layouts.
#include "vecalg/weighted.h"
#include "vorxlcomb_vv_3x1.inc"
