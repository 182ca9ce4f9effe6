// Determinants by reference LAPACK, one getrf per object on a copy of the matrix.
#include "det.h"

extern "C" {
void sgetrf_(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info);
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* ipiv, int* info);
}

namespace lapack_peer {

static void factor(int n, float* a, int* ipiv, int* info) { sgetrf_(&n, &n, a, &n, ipiv, info); }
static void factor(int n, double* a, int* ipiv, int* info) { dgetrf_(&n, &n, a, &n, ipiv, info); }

template <class T, int N> void det(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        T m[N * N];
        int ipiv[N], info;
        for (int e = 0; e < N * N; ++e) m[e] = a[k * N * N + e];
        factor(N, m, ipiv, &info);
        T p = 1;
        for (int i = 0; i < N; ++i) p *= ipiv[i] != i + 1 ? -m[i * N + i] : m[i * N + i];
        d[k] = p;
    }
}

template void det<float, 3>(const float*, float*, std::size_t);
template void det<float, 4>(const float*, float*, std::size_t);
template void det<float, 6>(const float*, float*, std::size_t);
template void det<double, 3>(const double*, double*, std::size_t);
template void det<double, 4>(const double*, double*, std::size_t);
template void det<double, 6>(const double*, double*, std::size_t);
} // namespace lapack_peer
