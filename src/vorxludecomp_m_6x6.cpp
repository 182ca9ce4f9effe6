// LU decomposition of one matrix of order 6: 32f and 64f, all layouts.
#include "lu/decomp.h"
#include "vorxludecomp_m_6x6.inc"
