// QR back substitution, one factor for an array of right sides, sizes given at run time: 32f and
// 64f, all layouts.
#include "qr/backsubst.h"
#include "vorxqrbacksubst_mva.inc"
