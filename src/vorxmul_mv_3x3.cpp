// Multiplication of one matrix, plain or transposed, by one vector, size 3x3: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mv_3x3.inc"
