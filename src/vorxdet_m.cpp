// Determinant of one matrix, order given at run time: 32f and 64f, all layouts.
#include "det/det.h"
#include "vorxdet_m.inc"
