// Saxpy of two arrays of vectors, length given at run time: 32f and 64f, all layouts.
#include "vecalg/weighted.h"
#include "vorxsaxpy_vava.inc"
