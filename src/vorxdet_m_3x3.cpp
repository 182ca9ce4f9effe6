// Determinant of one 3x3 matrix: 32f and 64f, all layouts.
#include "det/det.h"
#include "vorxdet_m_3x3.inc"
