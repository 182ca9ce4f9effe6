// Eigen 3.4 peers of the matrix functionals and the moves: fixed-size row-major maps
// over each object.
#include "shape.h"

#include <Eigen/Dense>

namespace eigen_peer {

template <class T, int N> using Mat = Eigen::Matrix<T, N, N, Eigen::RowMajor>;
using Eigen::Map;

template <class T, int N> void frobNorm(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) d[k] = Map<const Mat<T, N>>(a + k * N * N).norm();
}

template <class T, int N> void trace(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) d[k] = Map<const Mat<T, N>>(a + k * N * N).trace();
}

template <class T, int N> void transpose(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        Map<Mat<T, N>>(d + k * N * N) = Map<const Mat<T, N>>(a + k * N * N).transpose();
}

template <class T, int N> void transposeL(T* const* a, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        Map<Mat<T, N>> out(d[k]);
        out = Map<const Mat<T, N>>(a[k]).transpose();
    }
}

// One element of all objects after another: Eigen's arrays over each element's run.
template <class T, int N> void transposeP(T* const* a, T* const* d, std::size_t n) {
    using A = Eigen::Array<T, Eigen::Dynamic, 1>;
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j) Map<A>(d[j * N + i], Eigen::Index(n)) = Map<const A>(a[i * N + j], Eigen::Index(n));
}

template <class T, int N> void copyListToStrided(T* const* a, T* d, std::size_t n) {
    using S = Eigen::Stride<2 * N, 2>;
    for (std::size_t k = 0; k < n; ++k) Map<Mat<T, N>, 0, S>(d + k * 2 * N * N) = Map<const Mat<T, N>>(a[k]);
}

#include "shape_instances.inc"
} // namespace eigen_peer
