// The version record: the one place in the library that holds text.
#include "frame/base.h"

namespace {

const vorxVersionRecord kVersion = {
    4, 1, 11, 30, {'a', '6', '\0', '\0'}, "libvorxa6.so", "v4.1", "Jul 23 2004",
};

}  // namespace

VORX_EXPORT const vorxVersionRecord* vorxGetLibVersion(void) { return &kVersion; }
