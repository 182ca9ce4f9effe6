// Frobenius norm of an array of matrices, size 6x6: 32f and 64f, all layouts.
#include "functional/frobnorm.h"
#include "vorxfrobnorm_ma_6x6.inc"
