// QR decomposition of one matrix, order 6: 32f and 64f, all layouts.
#include "qr/decomp.h"
#include "vorxqrdecomp_m_6x6.inc"
