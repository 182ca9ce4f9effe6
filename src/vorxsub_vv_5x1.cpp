// Vector subtraction of two vectors, length 5: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_vv_5x1.inc"
