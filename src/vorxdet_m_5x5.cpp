// Determinant of one 5x5 matrix: 32f and 64f, all layouts.
#include "det/det.h"
#include "vorxdet_m_5x5.inc"
