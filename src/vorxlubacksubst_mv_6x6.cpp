// LU back substitution, one matrix and one vector of order 6: 32f and 64f, all layouts.
#include "lu/backsubst.h"
#include "vorxlubacksubst_mv_6x6.inc"
