// Saxpy of an array of vectors and one vector, length given at run time: 32f and 64f, all layouts.
#include "vecalg/weighted.h"
#include "vorxsaxpy_vav.inc"
