// Transpose of an array of matrices, size 4x4: 32f and 64f, all layouts.
#include "shape/transpose.h"
#include "vorxtranspose_ma_4x4.inc"
