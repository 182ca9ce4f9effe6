// QR back substitution, one factor for an array of right sides, order 5: 32f and 64f, all layouts.
#include "qr/backsubst.h"
#include "vorxqrbacksubst_mva_5x5.inc"
