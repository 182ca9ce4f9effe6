// QR back substitution, one factor and one right side, order 6: 32f and 64f, all layouts.
#include "qr/backsubst.h"
#include "vorxqrbacksubst_mv_6x6.inc"
