// Saxpy of one vector and an array of vectors, length 4: 32f and 64f, all layouts.
#include "vecalg/weighted.h"
#include "vorxsaxpy_vva_4x1.inc"
