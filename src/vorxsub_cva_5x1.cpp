// Vector subtraction of an array of vectors from a value, length 5: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_cva_5x1.inc"
