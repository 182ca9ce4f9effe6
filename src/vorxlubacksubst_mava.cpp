// LU back substitution, an array of matrices with an array of vectors, order given at run time: 32f and 64f,
// all layouts.
#include "lu/backsubst.h"
#include "vorxlubacksubst_mava.inc"
