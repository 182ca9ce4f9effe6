// LU decomposition of one matrix of order 4: 32f and 64f, all layouts.
#include "lu/decomp.h"
#include "vorxludecomp_m_4x4.inc"
