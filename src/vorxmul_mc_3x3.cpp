// Multiplication of a matrix, plain or transposed, by a constant, size 3x3: 32f and 64f, all layouts.
#include "elementwise/scale.h"
#include "vorxmul_mc_3x3.inc"
