// Vector subtraction of a vector from a value, length given at run time: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_cv.inc"
