// LU back substitution, an array of matrices with an array of vectors of order 4: 32f and 64f,
// all layouts.
#include "lu/backsubst.h"
#include "vorxlubacksubst_mava_4x4.inc"
