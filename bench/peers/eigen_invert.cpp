// Eigen 3.4's inverse() on fixed-size row-major matrices, over a Map of each object
// (cofactor formulas up to 4x4, a partial-pivoting LU beyond).
#include "invert.h"

#include <Eigen/Dense>

namespace eigen_peer {

template <class T, int N> using Mat = Eigen::Matrix<T, N, N, Eigen::RowMajor>;
using Eigen::Map;

template <class T, int N> void invert(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) Map<Mat<T, N>>(d + k * N * N) = Map<const Mat<T, N>>(a + k * N * N).inverse();
}

template <class T, int N> void invertS(const T* a, T* d, long os, long rs, long es, std::size_t n) {
    using S = Eigen::Stride<Eigen::Dynamic, Eigen::Dynamic>;
    const long E = sizeof(T);
    for (std::size_t k = 0; k < n; ++k) {
        long o = static_cast<long>(k) * os / E;
        Map<Mat<T, N>, 0, S>(d + o, S(rs / E, es / E)) = Map<const Mat<T, N>, 0, S>(a + o, S(rs / E, es / E)).inverse();
    }
}

template <class T, int N> void invertL(T* const* a, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        Map<Mat<T, N>> out(d[k]);
        out = Map<const Mat<T, N>>(a[k]).inverse();
    }
}

#include "invert_instances.inc"
} // namespace eigen_peer
