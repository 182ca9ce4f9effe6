// QR decomposition of an array of matrices, order 6: 32f and 64f, all layouts.
#include "qr/decomp.h"
#include "vorxqrdecomp_ma_6x6.inc"
