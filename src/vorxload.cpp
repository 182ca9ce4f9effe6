// LoadIdentity over arrays of matrices: 32f and 64f, Strided, Pointer-strided and
// List-strided layouts.
#include "shape/identity.h"
#include "vorxload.inc"
