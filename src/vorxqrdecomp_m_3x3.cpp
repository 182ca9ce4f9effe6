// QR decomposition of one matrix, order 3: 32f and 64f, all layouts.
#include "qr/decomp.h"
#include "vorxqrdecomp_m_3x3.inc"
