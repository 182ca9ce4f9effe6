// Frobenius norm of an array of matrices, size 4x4: 32f and 64f, all layouts.
#include "functional/frobnorm.h"
#include "vorxfrobnorm_ma_4x4.inc"
