// Vector addition of two vectors, length 6: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxadd_vv_6x1.inc"
