// LU decomposition of an array of matrices of order 4: 32f and 64f, all layouts.
#include "lu/decomp.h"
#include "vorxludecomp_ma_4x4.inc"
