// Vector subtraction of two arrays of vectors, length given at run time: 32f and 64f, all layouts.
#include "elementwise/vector.h"
#include "vorxsub_vava.inc"
