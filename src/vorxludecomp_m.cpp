// LU decomposition of one matrix, order given at run time: 32f and 64f, all layouts.
#include "lu/decomp.h"
#include "vorxludecomp_m.inc"
