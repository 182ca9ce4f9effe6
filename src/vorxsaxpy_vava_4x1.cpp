// Saxpy of two arrays of vectors, length 4: 32f and 64f, all layouts.
#include "vecalg/weighted.h"
#include "vorxsaxpy_vava_4x1.inc"
