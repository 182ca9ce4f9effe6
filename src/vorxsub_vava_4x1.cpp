// Vector subtraction of two arrays of vectors, length 4: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_vava_4x1.inc"
