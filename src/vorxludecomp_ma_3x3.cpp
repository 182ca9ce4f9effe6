// LU decomposition of an array of matrices of order 3: 32f and 64f, all layouts.
#include "lu/decomp.h"
#include "vorxludecomp_ma_3x3.inc"
