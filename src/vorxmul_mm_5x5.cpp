// Matrix products of one matrix by one matrix, size 5x5: 32f and 64f, all layouts.
#include "products/matmul.h"
#include "vorxmul_mm_5x5.inc"
