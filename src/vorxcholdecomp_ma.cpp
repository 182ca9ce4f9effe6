// Cholesky decomposition of arrays of matrices, 32f and 64f, every order and layout.
#include "cholesky/decomp.h"
#include "vorxcholdecomp_ma.inc"
VORX_CHOL_DECOMP_MA(VORX_CHOL_ALIAS)
