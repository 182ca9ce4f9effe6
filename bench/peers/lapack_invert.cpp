// Inversion by reference LAPACK, getrf then getri per object on a copy.
#include "invert.h"

extern "C" {
void sgetrf_(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info);
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* ipiv, int* info);
void sgetri_(const int* n, float* a, const int* lda, const int* ipiv, float* work, const int* lwork, int* info);
void dgetri_(const int* n, double* a, const int* lda, const int* ipiv, double* work, const int* lwork, int* info);
}

namespace lapack_peer {

static void inverse(int n, float* a, int* ipiv, float* work, int lwork, int* info) {
    sgetrf_(&n, &n, a, &n, ipiv, info);
    sgetri_(&n, a, &n, ipiv, work, &lwork, info);
}
static void inverse(int n, double* a, int* ipiv, double* work, int lwork, int* info) {
    dgetrf_(&n, &n, a, &n, ipiv, info);
    dgetri_(&n, a, &n, ipiv, work, &lwork, info);
}

template <class T, int N> void invert(const T* a, T* d, std::size_t n) {
    T work[64 * N];
    for (std::size_t k = 0; k < n; ++k) {
        T* m = d + k * N * N;
        int ipiv[N], info;
        for (int e = 0; e < N * N; ++e) m[e] = a[k * N * N + e];
        inverse(N, m, ipiv, work, 64 * N, &info);
    }
}

template void invert<float, 3>(const float*, float*, std::size_t);
template void invert<float, 4>(const float*, float*, std::size_t);
template void invert<float, 6>(const float*, float*, std::size_t);
template void invert<double, 3>(const double*, double*, std::size_t);
template void invert<double, 4>(const double*, double*, std::size_t);
template void invert<double, 6>(const double*, double*, std::size_t);
} // namespace lapack_peer
