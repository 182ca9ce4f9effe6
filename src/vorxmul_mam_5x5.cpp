// Matrix products of an array of matrices by one matrix, size 5x5: 32f and 64f, all layouts.
#include "products/matmul.h"
#include "vorxmul_mam_5x5.inc"
