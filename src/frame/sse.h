// The register layer of the packed 32f schemes: memory to 4-lane registers and
// back. The arithmetic above it never sees a stride. Lane comments list lanes 0..3.
#pragma once

#include <xmmintrin.h>

namespace vorx::sse {

using R = __m128;

inline const __m64* half(const float* p) { return reinterpret_cast<const __m64*>(p); }
inline __m64* half(float* p) { return reinterpret_cast<__m64*>(p); }

inline R zero() { return _mm_setzero_ps(); }
inline R broadcast(float v) { return _mm_set1_ps(v); }

// Three elements: a 32-bit load of element 0 and a 64-bit load of elements 1, 2.
// Exactly three elements are touched.            lanes: p0, 0, p1, p2
inline R load3(const float* p) { return _mm_loadh_pi(_mm_load_ss(p), half(p + 1)); }
inline void store3(float* p, R v)
{
    _mm_store_ss(p, v);
    _mm_storeh_pi(half(p + 1), v);
}

// Four elements as two 64-bit halves (no alignment needed), unaligned or aligned.
inline R load4h(const float* p) { return _mm_loadh_pi(_mm_loadl_pi(zero(), half(p)), half(p + 2)); }
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
inline void store2(float* p, R v) { _mm_storel_pi(half(p), v); }

// One element in lane 0.                                    lanes: p0, 0, 0, 0
inline R load1(const float* p) { return _mm_load_ss(p); }
inline void store1(float* p, R v) { _mm_store_ss(p, v); }

inline bool aligned16(const void* p) { return (reinterpret_cast<uintptr_t>(p) & 15) == 0; }

inline void prefetchNta(const void* p) { _mm_prefetch(static_cast<const char*>(p), _MM_HINT_NTA); }

}  // namespace vorx::sse
