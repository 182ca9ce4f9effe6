// LU decomposition of an array of matrices, order given at run time: 32f and 64f, all layouts.
#include "lu/decomp.h"
#include "vorxludecomp_ma.inc"
