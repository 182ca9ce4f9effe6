// Vector addition of two arrays of vectors, length given at run time: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxadd_vava.inc"
