// QR back substitution, an array of factors with an array of right sides, order 4: 32f and 64f,
// all layouts.
#include "qr/backsubst.h"
#include "vorxqrbacksubst_mava_4x4.inc"
