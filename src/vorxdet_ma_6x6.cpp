// Determinant of an array of 6x6 matrices: 32f and 64f, all layouts.
#include "det/det.h"
#include "vorxdet_ma_6x6.inc"
