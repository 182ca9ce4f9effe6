// LU decomposition of one matrix of order 3: 32f and 64f, all layouts.
#include "lu/decomp.h"
#include "vorxludecomp_m_3x3.inc"
