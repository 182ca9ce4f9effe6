// Determinant of an array of 5x5 matrices: 32f and 64f, all layouts.
#include "det/det.h"
#include "vorxdet_ma_5x5.inc"
