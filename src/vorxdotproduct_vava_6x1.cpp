// Dot product of two arrays of vectors, length 6: 32f and 64f, all layouts.
#include "vecalg/reduce.h"
#include "vorxdotproduct_vava_6x1.inc"
