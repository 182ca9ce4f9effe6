// QR back substitution, one factor and one right side, order 3: 32f and 64f, all layouts.
#include "qr/backsubst.h"
#include "vorxqrbacksubst_mv_3x3.inc"
