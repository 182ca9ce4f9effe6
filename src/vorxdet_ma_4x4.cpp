// Determinant of an array of 4x4 matrices: 32f and 64f, all layouts.
#include "det/det.h"
#include "vorxdet_ma_4x4.inc"
