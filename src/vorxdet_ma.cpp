// Determinant of an array of matrices, order given at run time: 32f and 64f, all layouts.
#include "det/det.h"
#include "vorxdet_ma.inc"
