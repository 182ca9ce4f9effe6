// Matrix products of one matrix by an array of matrices, sizes given at run time: 32f and 64f, all layouts.
#include "products/matmul.h"
#include "vorxmul_mma.inc"
