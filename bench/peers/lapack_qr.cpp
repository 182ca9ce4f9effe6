// Reference LAPACK per object: geqrf on a column-major copy (copied back row-major),
// and for the solve dgeqrf, dormqr (Q' b) and dtrtrs (R x = Q' b).
#include "qr.h"

extern "C" {
void sgeqrf_(const int* m, const int* n, float* a, const int* lda, float* tau, float* work, const int* lwork,
             int* info);
void dgeqrf_(const int* m, const int* n, double* a, const int* lda, double* tau, double* work, const int* lwork,
             int* info);
void dormqr_(const char* side, const char* trans, const int* m, const int* n, const int* k, const double* a,
             const int* lda, const double* tau, double* c, const int* ldc, double* work, const int* lwork, int* info);
void dtrtrs_(const char* uplo, const char* trans, const char* diag, const int* n, const int* nrhs, const double* a,
             const int* lda, double* b, const int* ldb, int* info);
}

namespace lapack_peer {

static void geqrf(int m, int n, float* a, float* tau, float* work, int lwork, int* info) {
    sgeqrf_(&m, &n, a, &m, tau, work, &lwork, info);
}
static void geqrf(int m, int n, double* a, double* tau, double* work, int lwork, int* info) {
    dgeqrf_(&m, &n, a, &m, tau, work, &lwork, info);
}

template <class T, int M, int N> void qrDecomp(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        T m[M * N], tau[N], work[64 * N];
        int info;
        for (int i = 0; i < M; ++i)
            for (int j = 0; j < N; ++j) m[j * M + i] = a[k * M * N + i * N + j];
        geqrf(M, N, m, tau, work, 64 * N, &info);
        for (int i = 0; i < M; ++i)
            for (int j = 0; j < N; ++j) d[k * M * N + i * N + j] = m[j * M + i];
    }
}

template <class T, int N> void qrSolve(const T* a, const T* b, T* x, std::size_t n) {
    static_assert(sizeof(T) == sizeof(double), "double only");
    for (std::size_t k = 0; k < n; ++k) {
        double m[N * N], tau[N], work[64 * N];
        int info, nn = N, one = 1, lwork = 64 * N;
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) m[j * N + i] = a[k * N * N + i * N + j];
        T* y = x + k * N;
        for (int i = 0; i < N; ++i) y[i] = b[k * N + i];
        dgeqrf_(&nn, &nn, m, &nn, tau, work, &lwork, &info);
        dormqr_("L", "T", &nn, &one, &nn, m, &nn, tau, y, &nn, work, &lwork, &info);
        dtrtrs_("U", "N", "N", &nn, &one, m, &nn, y, &nn, &info);
    }
}

template void qrDecomp<float, 4, 4>(const float*, float*, std::size_t);
template void qrDecomp<float, 6, 6>(const float*, float*, std::size_t);
template void qrDecomp<double, 4, 4>(const double*, double*, std::size_t);
template void qrDecomp<double, 6, 6>(const double*, double*, std::size_t);
template void qrDecomp<float, 6, 4>(const float*, float*, std::size_t);
template void qrSolve<double, 6>(const double*, const double*, double*, std::size_t);

} // namespace lapack_peer
