// QR decomposition of an array of matrices, order 3: 32f and 64f, all layouts.
#include "qr/decomp.h"
#include "vorxqrdecomp_ma_3x3.inc"
