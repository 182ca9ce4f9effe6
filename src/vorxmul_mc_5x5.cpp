// Multiplication of a matrix, plain or transposed, by a constant, size 5x5: 32f and 64f, all layouts.
#include "elementwise/scale.h"
#include "vorxmul_mc_5x5.inc"
