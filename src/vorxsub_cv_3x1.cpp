// Vector subtraction of a vector from a value, length 3: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_cv_3x1.inc"
