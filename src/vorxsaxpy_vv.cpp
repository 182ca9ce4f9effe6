// Saxpy of two vectors, length given at run time: 32f and 64f, Contiguous, Strided and Pointer layouts.
#include "vecalg/weighted.h"
#include "vorxsaxpy_vv.inc"
