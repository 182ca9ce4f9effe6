// Multiplication of a vector by a constant, length 6: 32f and 64f, all layouts.
#include "elementwise/scale.h"
#include "vorxmul_vc_6x1.inc"
