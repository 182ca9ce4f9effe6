// Vector subtraction of two arrays of vectors, length 5: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_vava_5x1.inc"
