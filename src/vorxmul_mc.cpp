// Multiplication of a matrix, plain or transposed, by a constant, sizes given at run time: 32f and 64f, all layouts.
#include "elementwise/scale.h"
#include "vorxmul_mc.inc"
