// Multiplication of an array of matrices, plain or transposed, by one vector, sizes given at run time: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxmul_mav.inc"
