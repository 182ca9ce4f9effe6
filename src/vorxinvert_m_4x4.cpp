// Inversion of one 4x4 matrix: 32f and 64f, all layouts.
#include "invert/invert.h"
#include "vorxinvert_m_4x4.inc"
