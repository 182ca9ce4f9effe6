// QR decomposition of one matrix, order 5: 32f and 64f, all layouts.
#include "qr/decomp.h"
#include "vorxqrdecomp_m_5x5.inc"
