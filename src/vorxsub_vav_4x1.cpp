// Vector subtraction of an array of vectors and one vector, length 4: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_vav_4x1.inc"
