// Vector subtraction of a vector from a value, length 4: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_cv_4x1.inc"
