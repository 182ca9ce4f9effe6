// LU decomposition of an array of matrices of order 5: 32f and 64f, all layouts.
#include "lu/decomp.h"
#include "vorxludecomp_ma_5x5.inc"
