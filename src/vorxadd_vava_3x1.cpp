// Vector addition of two arrays of vectors, length 3: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxadd_vava_3x1.inc"
