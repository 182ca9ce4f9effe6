// Matrix products of an array of matrices by one matrix, sizes given at run time: 32f and 64f, all layouts.
#include "products/matmul.h"
#include "vorxmul_mam.inc"
