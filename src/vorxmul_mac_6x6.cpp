// Multiplication of an array of matrices, plain or transposed, by a constant, size 6x6: 32f and 64f, all layouts.
#include "elementwise/scale.h"
#include "vorxmul_mac_6x6.inc"
