// Inversion of one 3x3 matrix: 32f and 64f, all layouts.
#include "invert/invert.h"
#include "vorxinvert_m_3x3.inc"
