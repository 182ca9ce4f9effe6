// Linear combination of an array of vectors and one vector, length 6: 32f and 64f, all layouts.
#include "vecalg/weighted.h"
#include "vorxlcomb_vav_6x1.inc"
