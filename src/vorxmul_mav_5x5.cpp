// Multiplication of an array of matrices, plain or transposed, by one vector, size 5x5: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mav_5x5.inc"
