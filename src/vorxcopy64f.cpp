// Copy of arrays of vectors and matrices between the Strided, Pointer-strided and
// List-strided layouts, 64f.
#include "shape/copy.h"
#include "vorxcopy64f.inc"
