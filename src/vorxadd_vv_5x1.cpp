// Vector addition of two vectors, length 5: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxadd_vv_5x1.inc"
