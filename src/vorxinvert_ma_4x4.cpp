// Inversion of an array of 4x4 matrices: 32f and 64f, all layouts.
#include "invert/invert.h"
#include "vorxinvert_ma_4x4.inc"
