// Matrix products of one matrix by an array of matrices, size 5x5: 32f and 64f, all layouts.
#include "products/matmul.h"
#include "vorxmul_mma_5x5.inc"
