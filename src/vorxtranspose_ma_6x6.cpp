// Transpose of an array of matrices, size 6x6: 32f and 64f, all layouts.
#include "shape/transpose.h"
#include "vorxtranspose_ma_6x6.inc"
