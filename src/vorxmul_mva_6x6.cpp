// Multiplication of one matrix, plain or transposed, by an array of vectors, size 6x6: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mva_6x6.inc"
