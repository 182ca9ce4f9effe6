// Dot product of two arrays of vectors, length 5: 32f and 64f, all layouts.
#include "vecalg/reduce.h"
#include "vorxdotproduct_vava_5x1.inc"
