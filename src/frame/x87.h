// Double precision on the x87 unit. This processor variant has no SSE2, so every
// 64f operation runs in the x87 registers at the precision the caller's control
// word holds; the library never changes that word.
//
// The compiler keeps x87 values at register width across assignments and even
// across casts, so every x87 computation is written with explicit long double
// values (loading a double into one is exact) and every rounding the results
// depend on is made explicit through memory with the helpers below.
#pragma once

namespace vorx {

// Rounds to double by a store and a reload; the empty asm keeps the compiler from
// carrying the unrounded register on.
inline double roundToDouble(long double x)
{
    double d = static_cast<double>(x);
    __asm__("" : "+m"(d));
    return d;
}

// The same for a single-precision step that runs on the x87 unit.
inline float roundToFloat(long double x)
{
    float f = static_cast<float>(x);
    __asm__("" : "+m"(f));
    return f;
}

// Widening load of an element; exact for both element types.
inline long double wide(float x) { return x; }
inline long double wide(double x) { return x; }

// A sum held in a register may start from its first term instead of adding that
// term to +0.0: the add is exact and changes nothing unless the term is -0.0, and
// the two sums part only where every term is -0.0. From +0.0 the result is then
// +0.0 (under round to nearest), from the first term -0.0. So such a sum is stored
// and mended: where the stored value is -0.0, +0.0 added to it goes in its place,
// which is the +0.0 start's result under any rounding mode.
//
// The test reads the stored sign and exponent word back from memory (the empty asm
// keeps the compiler from testing a copy instead). A negative denormal that passes
// it is stored again unchanged: +0.0 + x = x for any nonzero x.
template <class T>
inline bool negativeZero(T* p)
{
    __asm__("" : "+m"(*p));
    unsigned top;
    __builtin_memcpy(&top, reinterpret_cast<const char*>(p) + sizeof(T) - 4, 4);
    return top == 0x80000000u;
}
inline void mendZeroStart(double* p)
{
    if (negativeZero(p)) [[unlikely]] *p = static_cast<double>(0.0L + wide(*p));
}

}  // namespace vorx
