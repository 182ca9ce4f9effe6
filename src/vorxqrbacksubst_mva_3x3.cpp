// QR back substitution, one factor for an array of right sides, order 3: 32f and 64f, all layouts.
#include "qr/backsubst.h"
#include "vorxqrbacksubst_mva_3x3.inc"
