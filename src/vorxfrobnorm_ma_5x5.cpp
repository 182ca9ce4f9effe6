// Frobenius norm of an array of matrices, size 5x5: 32f and 64f, all layouts.
#include "functional/frobnorm.h"
#include "vorxfrobnorm_ma_5x5.inc"
