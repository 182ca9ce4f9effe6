// Vector subtraction of an array of vectors and a value, length 4: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_vac_4x1.inc"
