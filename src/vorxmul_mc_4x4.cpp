// Multiplication of a matrix, plain or transposed, by a constant, size 4x4: 32f and 64f, all layouts.
#include "elementwise/scale.h"
#include "vorxmul_mc_4x4.inc"
