// QR back substitution, one factor and one right side, order 5: 32f and 64f, all layouts.
#include "qr/backsubst.h"
#include "vorxqrbacksubst_mv_5x5.inc"
