// Multiplication of one matrix, plain or transposed, by one vector, size 6x6: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mv_6x6.inc"
