// Multiplication of an array of vectors by a constant, length 3: 32f and 64f, all layouts.
#include "elementwise/scale.h"
#include "vorxmul_vac_3x1.inc"
