// Matrix products of one matrix by one matrix, size 4x4: 32f and 64f, all layouts.
#include "products/matmul.h"
#include "vorxmul_mm_4x4.inc"
