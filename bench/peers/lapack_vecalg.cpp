// Reference BLAS level 1 per object: dot products, norms and saxpy.
#include "vecalg.h"

extern "C" {
float sdot_(const int* n, const float* x, const int* incx, const float* y, const int* incy);
double ddot_(const int* n, const double* x, const int* incx, const double* y, const int* incy);
float snrm2_(const int* n, const float* x, const int* incx);
void scopy_(const int* n, const float* x, const int* incx, float* y, const int* incy);
void saxpy_(const int* n, const float* a, const float* x, const int* incx, float* y, const int* incy);
}

namespace blas_peer {

static float dotOf(int n, const float* x, int inc, const float* y) { return sdot_(&n, x, &inc, y, &inc); }
static double dotOf(int n, const double* x, int inc, const double* y) { return ddot_(&n, x, &inc, y, &inc); }

template <class T, int N> void dot(const T* a, const T* b, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) d[k] = dotOf(N, a + k * N, 1, b + k * N);
}

template <class T, int N> void dotS(const T* a, const T* b, T* d, long os, long es, std::size_t n) {
    const long o = os / long(sizeof(T));
    const int inc = static_cast<int>(es / long(sizeof(T)));
    for (std::size_t k = 0; k < n; ++k) d[k] = dotOf(N, a + k * o, inc, b + k * o);
}

template <class T, int N> void dotL(T* const* a, T* const* b, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) d[k] = dotOf(N, a[k], 1, b[k]);
}

template <class T, int N> void norm(const T* a, T* d, std::size_t n) {
    const int len = N, one = 1;
    for (std::size_t k = 0; k < n; ++k) d[k] = snrm2_(&len, a + k * N, &one);
}

template <class T> void dotLong(const T* a, const T* b, T* d, std::size_t len, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) d[k] = dotOf(static_cast<int>(len), a, 1, b);
}

template <class T> void saxpyLong(const T* a, T s, const T* b, T* d, std::size_t len, std::size_t n) {
    const int l = static_cast<int>(len), one = 1;
    for (std::size_t k = 0; k < n; ++k) {
        scopy_(&l, b, &one, d, &one);
        saxpy_(&l, &s, a, &one, d, &one);
    }
}

#include "vecalg_instances.inc"
} // namespace blas_peer
