// Multiplication of one matrix, plain or transposed, by one vector, sizes given at run time: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mv.inc"
