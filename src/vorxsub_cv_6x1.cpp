// Vector subtraction of a vector from a value, length 6: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_cv_6x1.inc"
