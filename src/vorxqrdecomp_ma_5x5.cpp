// QR decomposition of an array of matrices, order 5: 32f and 64f, all layouts.
#include "qr/decomp.h"
#include "vorxqrdecomp_ma_5x5.inc"
