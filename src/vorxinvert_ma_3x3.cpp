// Inversion of an array of 3x3 matrices: 32f and 64f, all layouts.
#include "invert/invert.h"
#include "vorxinvert_ma_3x3.inc"
