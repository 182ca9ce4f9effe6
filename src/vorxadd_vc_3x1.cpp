// Vector addition of a vector and a value, length 3: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxadd_vc_3x1.inc"
