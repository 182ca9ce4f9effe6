// L2 norm of each vector of an array, length given at run time: 32f and 64f, all layouts.
#include "vecalg/reduce.h"
#include "vorxl2norm_va.inc"
