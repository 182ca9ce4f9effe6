// Multiplication of an array of matrices, plain or transposed, by an array of vectors, size 4x4: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mava_4x4.inc"
