// Matrix products of one matrix by an array of matrices, size 3x3: 32f and 64f, all layouts.
#include "products/matmul.h"
#include "vorxmul_mma_3x3.inc"
