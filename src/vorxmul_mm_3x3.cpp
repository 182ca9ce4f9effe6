// Matrix products of one matrix by one matrix, size 3x3: 32f and 64f, all layouts.
#include "products/matmul.h"
#include "vorxmul_mm_3x3.inc"
