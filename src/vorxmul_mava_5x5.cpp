// Multiplication of an array of matrices, plain or transposed, by an array of vectors, size 5x5: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mava_5x5.inc"
