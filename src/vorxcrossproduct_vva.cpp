// Cross product of one vector and an array of vectors, length 3: 32f and 64f, all layouts.
#include "vecalg/cross.h"
#include "vorxcrossproduct_vva.inc"
