// Multiplication of an array of matrices, plain or transposed, by one vector, size 3x3: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mav_3x3.inc"
