// Copy of arrays of vectors and matrices between the Strided, Pointer-strided and
// List-strided layouts, 32f.
#include "shape/copy.h"
#include "vorxcopy32f.inc"
