// Eigen 3.4's determinant() on fixed-size row-major matrices, over a Map of each
// object (closed forms up to 4x4, a partial-pivoting LU beyond).
#include "det.h"

#include <Eigen/Dense>

namespace eigen_peer {

template <class T, int N> using Mat = Eigen::Matrix<T, N, N, Eigen::RowMajor>;
using Eigen::Map;

template <class T, int N> void det(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) d[k] = Map<const Mat<T, N>>(a + k * N * N).determinant();
}

template <class T, int N> void detS(const T* a, T* d, long os, long rs, long es, std::size_t n) {
    using S = Eigen::Stride<Eigen::Dynamic, Eigen::Dynamic>;
    const long E = sizeof(T);
    for (std::size_t k = 0; k < n; ++k)
        d[k] = Map<const Mat<T, N>, 0, S>(a + static_cast<long>(k) * os / E, S(rs / E, es / E)).determinant();
}

template <class T, int N> void detL(T* const* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) d[k] = Map<const Mat<T, N>>(a[k]).determinant();
}

#include "det_instances.inc"
} // namespace eigen_peer
