// Cholesky back substitution, one factor and one right side, 32f and 64f, every order and layout.
#include "cholesky/backsubst.h"
#include "vorxcholbacksubst_mv.inc"
VORX_CHOL_BACKSUBST_MV(VORX_CHOL_ALIAS)
