// QR decomposition of one matrix, order 4: 32f and 64f, all layouts.
#include "qr/decomp.h"
#include "vorxqrdecomp_m_4x4.inc"
