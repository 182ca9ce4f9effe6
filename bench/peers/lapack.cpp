// Reference LAPACK and BLAS, called once per object. They work on column-major
// matrices: a row-major caller copies each matrix across (and back) for the
// factorisations, and swaps the operands of a product instead.
#include "peers.h"

extern "C" {
void sgetrf_(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info);
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* ipiv, int* info);
void dgesv_(const int* n, const int* nrhs, double* a, const int* lda, int* ipiv, double* b,
            const int* ldb, int* info);
void sgemm_(const char* ta, const char* tb, const int* m, const int* n, const int* k,
            const float* alpha, const float* a, const int* lda, const float* b, const int* ldb,
            const float* beta, float* c, const int* ldc);
void dgemm_(const char* ta, const char* tb, const int* m, const int* n, const int* k,
            const double* alpha, const double* a, const int* lda, const double* b,
            const int* ldb, const double* beta, double* c, const int* ldc);
}

namespace lapack_peer {

static void getrf(int n, float* a, int* ipiv, int* info) { sgetrf_(&n, &n, a, &n, ipiv, info); }
static void getrf(int n, double* a, int* ipiv, int* info) { dgetrf_(&n, &n, a, &n, ipiv, info); }

template <class T, int N>
void luDecomp(const T* a, std::uint32_t* perm, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        T m[N * N];
        int ipiv[N], info;
        const T* src = a + k * N * N;
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) m[j * N + i] = src[i * N + j];
        getrf(N, m, ipiv, &info);
        T* dst = d + k * N * N;
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) dst[i * N + j] = m[j * N + i];
        std::uint32_t* p = perm + k * N;
        for (int i = 0; i < N; ++i) p[i] = i;
        for (int i = 0; i < N; ++i) {
            std::uint32_t t = p[i];
            p[i] = p[ipiv[i] - 1];
            p[ipiv[i] - 1] = t;
        }
    }
}

template <class T, int N> void luSolve(const T* a, const T* b, T* x, std::size_t n) {
    static_assert(sizeof(T) == sizeof(double), "dgesv only");
    for (std::size_t k = 0; k < n; ++k) {
        double m[N * N];
        int ipiv[N], info, nn = N, one = 1;
        const T* src = a + k * N * N;
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) m[j * N + i] = src[i * N + j];
        T* y = x + k * N;
        for (int i = 0; i < N; ++i) y[i] = b[k * N + i];
        dgesv_(&nn, &one, m, &nn, ipiv, y, &nn, &info);
    }
}

static void gemm(int n, const float* a, const float* b, float* c) {
    const float one = 1, zero = 0;
    sgemm_("N", "N", &n, &n, &n, &one, a, &n, b, &n, &zero, c, &n);
}
static void gemm(int n, const double* a, const double* b, double* c) {
    const double one = 1, zero = 0;
    dgemm_("N", "N", &n, &n, &n, &one, a, &n, b, &n, &zero, c, &n);
}

template <class T, int N> void mul(const T* a, const T* b, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) gemm(N, b + k * N * N, a + k * N * N, d + k * N * N);
}

template void luDecomp<float, 4>(const float*, std::uint32_t*, float*, std::size_t);
template void luDecomp<float, 6>(const float*, std::uint32_t*, float*, std::size_t);
template void luDecomp<double, 4>(const double*, std::uint32_t*, double*, std::size_t);
template void luDecomp<double, 6>(const double*, std::uint32_t*, double*, std::size_t);
template void luSolve<double, 6>(const double*, const double*, double*, std::size_t);
template void mul<float, 3>(const float*, const float*, float*, std::size_t);
template void mul<float, 4>(const float*, const float*, float*, std::size_t);
template void mul<float, 6>(const float*, const float*, float*, std::size_t);
template void mul<double, 4>(const double*, const double*, double*, std::size_t);
} // namespace lapack_peer
