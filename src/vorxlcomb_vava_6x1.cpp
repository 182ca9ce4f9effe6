// Linear combination of two arrays of vectors, length 6: 32f and 64f, all layouts.
#include "vecalg/weighted.h"
#include "vorxlcomb_vava_6x1.inc"
