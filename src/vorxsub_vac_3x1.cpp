// Vector subtraction of an array of vectors and a value, length 3: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_vac_3x1.inc"
