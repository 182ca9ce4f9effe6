// Multiplication of one matrix, plain or transposed, by an array of vectors, size 3x3: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mva_3x3.inc"
