// Extract of any operand into a dense buffer, 32f.
#include "shape/extract.h"
#include "vorxextract32f.inc"
