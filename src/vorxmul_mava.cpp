// Multiplication of an array of matrices, plain or transposed, by an array of vectors, sizes given at run time: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mava.inc"
