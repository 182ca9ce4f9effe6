// Matrix products of one matrix by an array of matrices, size 4x4: 32f and 64f, all layouts.
#include "products/matmul.h"
#include "vorxmul_mma_4x4.inc"
