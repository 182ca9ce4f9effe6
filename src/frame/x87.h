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

}  // namespace vorx
