// Matrix products of two arrays of matrices, size 5x5: 32f and 64f, all layouts.
#include "products/matmul.h"
#include "vorxmul_mama_5x5.inc"
