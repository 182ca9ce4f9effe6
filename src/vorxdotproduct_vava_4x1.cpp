// Dot product of two arrays of vectors, length 4: 32f and 64f, all layouts.
#include "vecalg/reduce.h"
#include "vorxdotproduct_vava_4x1.inc"
