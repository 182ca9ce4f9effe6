// Multiplication of a vector by a constant, length 3: 32f and 64f, all layouts.
#include "elementwise/scale.h"
#include "vorxmul_vc_3x1.inc"
