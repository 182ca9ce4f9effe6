// Vector addition of an array of vectors and one vector, length 3: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxadd_vav_3x1.inc"
