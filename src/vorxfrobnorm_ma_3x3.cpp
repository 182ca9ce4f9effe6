// Frobenius norm of an array of matrices, size 3x3: 32f and 64f, all layouts.
#include "functional/frobnorm.h"
#include "vorxfrobnorm_ma_3x3.inc"
