// Determinant of an array of 3x3 matrices: 32f and 64f, all layouts.
#include "det/det.h"
#include "vorxdet_ma_3x3.inc"
