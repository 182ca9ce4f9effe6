// Vector subtraction of two vectors, length 3: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_vv_3x1.inc"
