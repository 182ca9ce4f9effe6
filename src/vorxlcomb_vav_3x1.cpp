// Linear combination of an array of vectors and one vector, length 3: 32f and 64f, all layouts.
#include "vecalg/weighted.h"
#include "vorxlcomb_vav_3x1.inc"
