// QR decomposition of an array of matrices, order 4: 32f and 64f, all layouts.
#include "qr/decomp.h"
#include "vorxqrdecomp_ma_4x4.inc"
