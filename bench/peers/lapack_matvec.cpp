// Reference BLAS for matrix by vector, gaxpy and scaling, called once per object.
#include "matvec.h"

extern "C" {
void sgemv_(const char* t, const int* m, const int* n, const float* alpha, const float* a, const int* lda,
            const float* x, const int* incx, const float* beta, float* y, const int* incy);
void dgemv_(const char* t, const int* m, const int* n, const double* alpha, const double* a, const int* lda,
            const double* x, const int* incx, const double* beta, double* y, const int* incy);
void scopy_(const int* n, const float* x, const int* incx, float* y, const int* incy);
void sscal_(const int* n, const float* a, float* x, const int* incx);
}

namespace lapack_peer {

static void gemv(int n, float beta, const float* a, const float* x, float* d) {
    const float one = 1;
    const int inc = 1;
    sgemv_("T", &n, &n, &one, a, &n, x, &inc, &beta, d, &inc);
}
static void gemv(int n, double beta, const double* a, const double* x, double* d) {
    const double one = 1;
    const int inc = 1;
    dgemv_("T", &n, &n, &one, a, &n, x, &inc, &beta, d, &inc);
}

template <class T, int N>
void matvec(const T* a, long aStep, const T* x, long xStep, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) gemv(N, T(0), a + k * aStep, x + k * xStep, d + k * N);
}

template <class T, int N> void gaxpy(const T* a, const T* x, const T* y, T* d, std::size_t n) {
    const int len = N, inc = 1;
    for (std::size_t k = 0; k < n; ++k) {
        scopy_(&len, y + k * N, &inc, d + k * N, &inc);
        gemv(N, T(1), a, x + k * N, d + k * N);
    }
}

template <class T, int E> void scale(const T* a, T v, T* d, std::size_t n) {
    const int len = E, inc = 1;
    for (std::size_t k = 0; k < n; ++k) {
        scopy_(&len, a + k * E, &inc, d + k * E, &inc);
        sscal_(&len, &v, d + k * E, &inc);
    }
}

#include "matvec_instances.inc"
} // namespace lapack_peer
