// Saxpy of two arrays of vectors, length 3: 32f and 64f, all layouts.
#include "vecalg/weighted.h"
#include "vorxsaxpy_vava_3x1.inc"
