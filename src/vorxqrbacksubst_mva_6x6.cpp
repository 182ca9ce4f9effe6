// QR back substitution, one factor for an array of right sides, order 6: 32f and 64f, all layouts.
#include "qr/backsubst.h"
#include "vorxqrbacksubst_mva_6x6.inc"
