// Cross product of an array of vectors and one vector, length 3: 32f and 64f, all layouts.
#include "vecalg/cross.h"
#include "vorxcrossproduct_vav.inc"
