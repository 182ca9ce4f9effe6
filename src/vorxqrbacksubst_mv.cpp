// QR back substitution, one factor and one right side, sizes given at run time: 32f and 64f, all
// layouts.
#include "qr/backsubst.h"
#include "vorxqrbacksubst_mv.inc"
