// Multiplication of one matrix, plain or transposed, by one vector, size 4x4: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mv_4x4.inc"
