// LU back substitution, one matrix and one vector, order given at run time: 32f and 64f, all layouts.
#include "lu/backsubst.h"
#include "vorxlubacksubst_mv.inc"
