// Cholesky back substitution, arrays of factors and right sides paired, 32f and 64f, every order and layout.
#include "cholesky/backsubst.h"
#include "vorxcholbacksubst_mava.inc"
VORX_CHOL_BACKSUBST_MAVA(VORX_CHOL_ALIAS)
