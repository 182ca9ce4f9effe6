// Vector addition of an array of vectors and one vector, length given at run time: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxadd_vav.inc"
