// Saxpy of one vector and an array of vectors, length 3: 32f and 64f, all layouts.
#include "vecalg/weighted.h"
#include "vorxsaxpy_vva_3x1.inc"
