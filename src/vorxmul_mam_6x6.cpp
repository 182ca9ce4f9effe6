// Matrix products of an array of matrices by one matrix, size 6x6: 32f and 64f, all layouts.
#include "products/matmul.h"
#include "vorxmul_mam_6x6.inc"
