// Multiplication of a vector by a constant, length 4: 32f and 64f, all layouts.
#include "elementwise/scale.h"
#include "vorxmul_vc_4x1.inc"
