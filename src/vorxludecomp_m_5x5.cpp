// LU decomposition of one matrix of order 5: 32f and 64f, all layouts.
#include "lu/decomp.h"
#include "vorxludecomp_m_5x5.inc"
