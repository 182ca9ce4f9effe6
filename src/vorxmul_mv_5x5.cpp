// Multiplication of one matrix, plain or transposed, by one vector, size 5x5: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mv_5x5.inc"
