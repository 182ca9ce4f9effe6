// Inversion of one 6x6 matrix: 32f and 64f, all layouts.
#include "invert/invert.h"
#include "vorxinvert_m_6x6.inc"
