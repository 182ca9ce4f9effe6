// Cross product of two arrays of vectors, length 3: 32f and 64f, all layouts.
#include "vecalg/cross.h"
#include "vorxcrossproduct_vava.inc"
