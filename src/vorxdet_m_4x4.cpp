// Determinant of one 4x4 matrix: 32f and 64f, all layouts.
#include "det/det.h"
#include "vorxdet_m_4x4.inc"
