// Frobenius norm of an array of matrices, size given at run time: 32f and 64f, all layouts.
#include "functional/frobnorm.h"
#include "vorxfrobnorm_ma.inc"
