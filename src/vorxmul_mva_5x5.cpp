// Multiplication of one matrix, plain or transposed, by an array of vectors, size 5x5: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mva_5x5.inc"
