// Moving single elements between memory and the x87 unit without changing a bit
// that the behaviour does not change: a plain copy, and a rounded store that later
// reads must fetch from memory.
#pragma once

#include <xmmintrin.h>

namespace vorx {

// A plain copy of an element, bit for bit: a 64f value never passes through an x87
// register, which would quieten a signalling NaN (on i386 it goes through the low
// half of an SSE register, one load and one store instead of two of each). The
// empty asm makes the first arithmetic read load the element from where it was
// stored, not a copy of the integer register bounced through the stack.
template <class T>
inline void copyBits(T* to, const T* from)
{
#if defined(__i386__)
    if constexpr (sizeof(T) == 8) {
        _mm_storel_pi(reinterpret_cast<__m64*>(to),
                      _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(from)));
    } else
#endif
    {
        __builtin_memcpy(to, from, sizeof(T));
    }
    __asm__("" : "+m"(*to));
}

// Stores a wide value rounded to double straight into its element; the empty asm
// makes every later read of the element go back to memory, never to the unrounded
// register.
inline void storeRounded(double* e, long double x)
{
    *e = static_cast<double>(x);
    __asm__("" : "+m"(*e));
}

}  // namespace vorx
