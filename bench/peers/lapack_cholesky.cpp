// Reference LAPACK per object: potrf on a copy of each matrix ('U' on the column-major
// view, which is the row-major lower triangle), and dposv for the solve.
#include "cholesky.h"

extern "C" {
void spotrf_(const char* uplo, const int* n, float* a, const int* lda, int* info);
void dpotrf_(const char* uplo, const int* n, double* a, const int* lda, int* info);
void dposv_(const char* uplo, const int* n, const int* nrhs, double* a, const int* lda, double* b,
            const int* ldb, int* info);
}

namespace lapack_peer {

static void potrf(int n, float* a, int* info) { spotrf_("U", &n, a, &n, info); }
static void potrf(int n, double* a, int* info) { dpotrf_("U", &n, a, &n, info); }

template <class T, int N> void cholDecomp(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        T* m = d + k * N * N;
        for (int e = 0; e < N * N; ++e) m[e] = a[k * N * N + e];
        int info;
        potrf(N, m, &info);
    }
}

template <class T, int N> void cholSolve(const T* a, const T* b, T* x, std::size_t n) {
    static_assert(sizeof(T) == sizeof(double), "dposv only");
    for (std::size_t k = 0; k < n; ++k) {
        double m[N * N];
        int nn = N, one = 1, info;
        for (int e = 0; e < N * N; ++e) m[e] = a[k * N * N + e];
        for (int i = 0; i < N; ++i) x[k * N + i] = b[k * N + i];
        dposv_("U", &nn, &one, m, &nn, x + k * N, &nn, &info);
    }
}

template void cholDecomp<float, 4>(const float*, float*, std::size_t);
template void cholDecomp<float, 6>(const float*, float*, std::size_t);
template void cholDecomp<double, 4>(const double*, double*, std::size_t);
template void cholDecomp<double, 6>(const double*, double*, std::size_t);
template void cholSolve<double, 6>(const double*, const double*, double*, std::size_t);
} // namespace lapack_peer
