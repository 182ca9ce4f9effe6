// Saxpy of one vector and an array of vectors, length 6: 32f and 64f, all layouts.
#include "vecalg/weighted.h"
#include "vorxsaxpy_vva_6x1.inc"
