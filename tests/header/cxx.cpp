// The public header compiles as C++ and declares C linkage.
#include "vorx.h"

static_assert(sizeof(vorxStatus) == 4, "vorxStatus is 32-bit");
extern "C" {
typedef vorxStatus (*AddV3)(const float*, const float*, float*);
}
AddV3 vorxHeaderCxxCheck() { return &vorxAdd_vv_32f_3x1; }
