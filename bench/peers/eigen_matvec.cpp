// Eigen 3.4 for matrix by vector, gaxpy and scaling: fixed-size row-major Maps over
// each object.
#include "matvec.h"

#include <Eigen/Dense>

namespace eigen_peer {

template <class T, int N> using Vec = Eigen::Matrix<T, N, 1>;
template <class T, int N> using Mat = Eigen::Matrix<T, N, N, Eigen::RowMajor>;
using Eigen::Map;

template <class T, int N>
void matvec(const T* a, long aStep, const T* x, long xStep, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        Map<Vec<T, N>>(d + k * N).noalias() = Map<const Mat<T, N>>(a + k * aStep) * Map<const Vec<T, N>>(x + k * xStep);
}

template <class T, int N>
void matvecS(const T* a, long aos, const T* x, long xos, T* d, long dos, long es, std::size_t n) {
    using MS = Eigen::Stride<Eigen::Dynamic, Eigen::Dynamic>;
    using VS = Eigen::InnerStride<Eigen::Dynamic>;
    const long e = es / long(sizeof(T));
    const MS ms(N * e, e);
    for (std::size_t k = 0; k < n; ++k)
        Map<Vec<T, N>, 0, VS>(d + k * (dos / long(sizeof(T))), VS(e)).noalias() =
            Map<const Mat<T, N>, 0, MS>(a + k * (aos / long(sizeof(T))), ms) *
            Map<const Vec<T, N>, 0, VS>(x + k * (xos / long(sizeof(T))), VS(e));
}

template <class T, int N> void matvecL(T* const* a, T* const* x, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        Map<Vec<T, N>> out(d[k]);
        out.noalias() = Map<const Mat<T, N>>(a[k]) * Map<const Vec<T, N>>(x[k]);
    }
}

template <class T, int N> void gaxpy(const T* a, const T* x, const T* y, T* d, std::size_t n) {
    const Map<const Mat<T, N>> m(a);
    for (std::size_t k = 0; k < n; ++k)
        Map<Vec<T, N>>(d + k * N).noalias() = m * Map<const Vec<T, N>>(x + k * N) + Map<const Vec<T, N>>(y + k * N);
}

template <class T, int E> void scale(const T* a, T v, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) Map<Vec<T, E>>(d + k * E) = Map<const Vec<T, E>>(a + k * E) * v;
}

#include "matvec_instances.inc"
template void matvecS<float, 4>(const float*, long, const float*, long, float*, long, long, std::size_t);
template void matvecL<float, 4>(float* const*, float* const*, float* const*, std::size_t);
} // namespace eigen_peer
