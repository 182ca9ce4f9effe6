// Multiplication of an array of vectors by a constant, sizes given at run time: 32f and 64f, all layouts.
#include "elementwise/scale.h"
#include "vorxmul_vac.inc"
