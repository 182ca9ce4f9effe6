// Saxpy of an array of vectors and one vector, length 5: 32f and 64f, all layouts.
#include "vecalg/weighted.h"
#include "vorxsaxpy_vav_5x1.inc"
