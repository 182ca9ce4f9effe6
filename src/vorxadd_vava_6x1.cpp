// Vector addition of two arrays of vectors, length 6: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxadd_vava_6x1.inc"
