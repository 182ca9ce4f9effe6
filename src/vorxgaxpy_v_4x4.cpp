// Gaxpy of one matrix, one vector and one vector to add, size 4x4: 32f and 64f, all layouts.
#include "products/matvec.h"
#include "vorxgaxpy_v_4x4.inc"
