// The register layer of the packed 32f schemes: memory to 4-lane registers and
// back. The arithmetic above it never sees a stride. Lane comments list lanes 0..3.
#pragma once

#include <stdint.h>
#include <xmmintrin.h>

namespace vorx::sse {

using R = __m128;

inline const __m64* half(const float* p) { return reinterpret_cast<const __m64*>(p); }
inline __m64* half(float* p) { return reinterpret_cast<__m64*>(p); }

inline R zero() { return _mm_setzero_ps(); }

// The commutative operations with their operands in the order written. With a NaN in
// both operands SSE returns the first one's, and the compiler swaps the operands of
// an addition or a multiplication freely; an asm keeps `a` first, so every form
// gives the first operand's NaN (src1's, or the vector's before a constant's),
// packed and scalar alike, in both builds.
inline R add(R a, R b) { __asm__("addps %1, %0" : "+x"(a) : "x"(b)); return a; }
inline R mul(R a, R b) { __asm__("mulps %1, %0" : "+x"(a) : "x"(b)); return a; }
inline R add1(R a, R b) { __asm__("addss %1, %0" : "+x"(a) : "x"(b)); return a; }
inline R mul1(R a, R b) { __asm__("mulss %1, %0" : "+x"(a) : "x"(b)); return a; }
inline float add(float a, float b) { __asm__("addss %1, %0" : "+x"(a) : "x"(b)); return a; }
inline float mul(float a, float b) { __asm__("mulss %1, %0" : "+x"(a) : "x"(b)); return a; }

// Marks a value as read here: the loads that produce it happen before this point and
// cannot be sunk behind a later branch (the operand read ahead of the count test).
template <class V>
inline void keep(const V& v) { __asm__ volatile("" : : "m"(v)); }
inline R broadcast(float v) { return _mm_set1_ps(v); }

// Three elements: a 32-bit load of element 0 and a 64-bit load of elements 1, 2.
// Exactly three elements are touched.            lanes: p0, 0, p1, p2
inline R load3(const float* p) { return _mm_loadh_pi(_mm_load_ss(p), half(p + 1)); }
inline void store3(float* p, R v)
{
    _mm_store_ss(p, v);
    _mm_storeh_pi(half(p + 1), v);
}

// A register whose lanes are all about to be loaded, or never read: no instruction
// clears it first.
inline R blank()
{
    R r;
    __asm__("" : "=x"(r));
    return r;
}

// Four elements as two 64-bit halves (no alignment needed), unaligned or aligned.
inline R load4h(const float* p) { return _mm_loadh_pi(_mm_loadl_pi(blank(), half(p)), half(p + 2)); }
inline void store4h(float* p, R v)
{
    _mm_storel_pi(half(p), v);
    _mm_storeh_pi(half(p + 2), v);
}
inline R load4u(const float* p) { return _mm_loadu_ps(p); }
inline void store4u(float* p, R v) { _mm_storeu_ps(p, v); }
inline R load4a(const float* p) { return _mm_load_ps(p); }
inline void store4a(float* p, R v) { _mm_store_ps(p, v); }

// Two elements in the low lanes of a zeroed register.      lanes: p0, p1, 0, 0
inline R load2(const float* p) { return _mm_loadl_pi(zero(), half(p)); }
// Two elements in the low lanes, for shuffles that read no other lane.
inline R load2low(const float* p) { return _mm_loadl_pi(blank(), half(p)); }
inline void store2(float* p, R v) { _mm_storel_pi(half(p), v); }

// One element in lane 0.                                    lanes: p0, 0, 0, 0
inline R load1(const float* p) { return _mm_load_ss(p); }
inline void store1(float* p, R v) { _mm_store_ss(p, v); }

inline bool aligned16(const void* p) { return (reinterpret_cast<uintptr_t>(p) & 15) == 0; }

inline void prefetchNta(const void* p) { _mm_prefetch(static_cast<const char*>(p), _MM_HINT_NTA); }

}  // namespace vorx::sse
