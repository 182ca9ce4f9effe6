// Vector addition of a vector and a value, length 4: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxadd_vc_4x1.inc"
