// LU back substitution, one matrix and one vector of order 5: 32f and 64f, all layouts.
#include "lu/backsubst.h"
#include "vorxlubacksubst_mv_5x5.inc"
