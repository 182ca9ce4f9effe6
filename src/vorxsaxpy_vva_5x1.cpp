// Saxpy of one vector and an array of vectors, length 5: 32f and 64f, all layouts.
#include "vecalg/weighted.h"
#include "vorxsaxpy_vva_5x1.inc"
