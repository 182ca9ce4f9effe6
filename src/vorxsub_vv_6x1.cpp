// Vector subtraction of two vectors, length 6: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_vv_6x1.inc"
