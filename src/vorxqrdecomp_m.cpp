// QR decomposition of one matrix, sizes given at run time: 32f and 64f, all layouts.
#include "qr/decomp.h"
#include "vorxqrdecomp_m.inc"
