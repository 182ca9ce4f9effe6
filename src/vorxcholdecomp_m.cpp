// Cholesky decomposition of one matrix, 32f and 64f, every order and layout.
#include "cholesky/decomp.h"
#include "vorxcholdecomp_m.inc"
VORX_CHOL_DECOMP_M(VORX_CHOL_ALIAS)
