// Dot product of two arrays of vectors, length given at run time: 32f and 64f, all layouts.
#include "vecalg/reduce.h"
#include "vorxdotproduct_vava.inc"
