// Frobenius norm of one matrix, size given at run time: 32f and 64f, all layouts.
#include "functional/frobnorm.h"
#include "vorxfrobnorm_m.inc"
