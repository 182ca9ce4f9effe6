// Matrix products of two arrays of matrices, size 6x6: 32f and 64f, all layouts.
#include "products/matmul.h"
#include "vorxmul_mama_6x6.inc"
