// Multiplication of one matrix, plain or transposed, by an array of vectors, size 4x4: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mva_4x4.inc"
