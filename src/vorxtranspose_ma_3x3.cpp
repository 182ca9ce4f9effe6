// Transpose of an array of matrices, size 3x3: 32f and 64f, all layouts.
#include "shape/transpose.h"
#include "vorxtranspose_ma_3x3.inc"
