// Inversion of an array of matrices, order given at run time: 32f and 64f, all layouts.
#include "invert/invert.h"
#include "vorxinvert_ma.inc"
