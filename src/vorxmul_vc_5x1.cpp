// Multiplication of a vector by a constant, length 5: 32f and 64f, all layouts.
#include "elementwise/scale.h"
#include "vorxmul_vc_5x1.inc"
