// Vector subtraction of a vector from a value, length 5: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_cv_5x1.inc"
