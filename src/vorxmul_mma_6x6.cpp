// Matrix products of one matrix by an array of matrices, size 6x6: 32f and 64f, all layouts.
#include "products/matmul.h"
#include "vorxmul_mma_6x6.inc"
