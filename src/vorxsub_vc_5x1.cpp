// Vector subtraction of a vector and a value, length 5: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_vc_5x1.inc"
