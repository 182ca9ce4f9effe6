// Cholesky back substitution, one factor for an array of right sides, 32f and 64f, every order and layout.
#include "cholesky/backsubst.h"
#include "vorxcholbacksubst_mva.inc"
VORX_CHOL_BACKSUBST_MVA(VORX_CHOL_ALIAS)
