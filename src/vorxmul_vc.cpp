// Multiplication of a vector by a constant, sizes given at run time: 32f and 64f, all layouts.
#include "elementwise/scale.h"
#include "vorxmul_vc.inc"
