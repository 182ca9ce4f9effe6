// LU decomposition of an array of matrices of order 6: 32f and 64f, all layouts.
#include "lu/decomp.h"
#include "vorxludecomp_ma_6x6.inc"
