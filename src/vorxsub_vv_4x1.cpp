// Vector subtraction of two vectors, length 4: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_vv_4x1.inc"
