// Inversion of one 5x5 matrix: 32f and 64f, all layouts.
#include "invert/invert.h"
#include "vorxinvert_m_5x5.inc"
