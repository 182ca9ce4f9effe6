// Vector subtraction of a vector and a value, length 6: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_vc_6x1.inc"
