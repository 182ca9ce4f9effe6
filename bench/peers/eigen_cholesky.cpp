// Eigen 3.4's LLT on fixed-size row-major matrices, over a Map of each object.
#include "cholesky.h"

#include <Eigen/Dense>

namespace eigen_peer {

template <class T, int N> using Mat = Eigen::Matrix<T, N, N, Eigen::RowMajor>;
template <class T, int N> using Vec = Eigen::Matrix<T, N, 1>;
using Eigen::Map;

template <class T, int N> void cholDecomp(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        Eigen::LLT<Mat<T, N>> llt(Map<const Mat<T, N>>(a + k * N * N));
        Map<Mat<T, N>>(d + k * N * N).template triangularView<Eigen::Lower>() = llt.matrixL();
    }
}

template <class T, int N> void cholDecompS(const T* a, T* d, long os, long rs, long es, std::size_t n) {
    using S = Eigen::Stride<Eigen::Dynamic, Eigen::Dynamic>;
    const long E = sizeof(T);
    for (std::size_t k = 0; k < n; ++k) {
        long o = static_cast<long>(k) * os / E;
        Eigen::LLT<Mat<T, N>> llt(Map<const Mat<T, N>, 0, S>(a + o, S(rs / E, es / E)));
        Map<Mat<T, N>, 0, S>(d + o, S(rs / E, es / E)).template triangularView<Eigen::Lower>() = llt.matrixL();
    }
}

template <class T, int N> void cholDecompL(T* const* a, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        Eigen::LLT<Mat<T, N>> llt(Map<const Mat<T, N>>(a[k]));
        Map<Mat<T, N>>(d[k]).template triangularView<Eigen::Lower>() = llt.matrixL();
    }
}

template <class T, int N> void cholSolve(const T* a, const T* b, T* x, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        Eigen::LLT<Mat<T, N>> llt(Map<const Mat<T, N>>(a + k * N * N));
        Map<Vec<T, N>>(x + k * N) = llt.solve(Map<const Vec<T, N>>(b + k * N));
    }
}

#include "cholesky_instances.inc"
} // namespace eigen_peer
