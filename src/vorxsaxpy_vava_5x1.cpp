// Saxpy of two arrays of vectors, length 5: 32f and 64f, all layouts.
#include "vecalg/weighted.h"
#include "vorxsaxpy_vava_5x1.inc"
