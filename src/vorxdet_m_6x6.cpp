// Determinant of one 6x6 matrix: 32f and 64f, all layouts.
#include "det/det.h"
#include "vorxdet_m_6x6.inc"
