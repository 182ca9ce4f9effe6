// Vector subtraction of an array of vectors from one vector, length 3: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_vva_3x1.inc"
