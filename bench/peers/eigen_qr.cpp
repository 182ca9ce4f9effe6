// Eigen 3.4's HouseholderQR on fixed-size row-major maps of each object; its
// matrixQR() is the factor in the form vorx leaves.
#include "qr.h"

#include <Eigen/Dense>

namespace eigen_peer {

template <class T, int M, int N> using Mat = Eigen::Matrix<T, M, N, N == 1 ? Eigen::ColMajor : Eigen::RowMajor>;
template <class T, int M, int N> using Strided = Eigen::Map<Mat<T, M, N>, 0, Eigen::Stride<Eigen::Dynamic, Eigen::Dynamic>>;

template <class T, int M, int N> void qrDecomp(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        Eigen::HouseholderQR<Mat<T, M, N>> qr(Eigen::Map<const Mat<T, M, N>>(a + k * M * N));
        Eigen::Map<Mat<T, M, N>>(d + k * M * N) = qr.matrixQR();
    }
}

template <class T, int M, int N>
void qrDecompS(const T* a, T* d, long os, long rs, long es, std::size_t n) {
    Eigen::Stride<Eigen::Dynamic, Eigen::Dynamic> s(rs / long(sizeof(T)), es / long(sizeof(T)));
    for (std::size_t k = 0; k < n; ++k) {
        long at = static_cast<long>(k) * os / long(sizeof(T));
        Eigen::HouseholderQR<Mat<T, M, N>> qr(Strided<T, M, N>(const_cast<T*>(a) + at, s));
        Strided<T, M, N>(d + at, s) = qr.matrixQR();
    }
}

template <class T, int M, int N> void qrDecompL(T* const* a, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        Eigen::HouseholderQR<Mat<T, M, N>> qr(Eigen::Map<const Mat<T, M, N>>(a[k]));
        Eigen::Map<Mat<T, M, N>> out(d[k]);
        out = qr.matrixQR();
    }
}

template <class T, int N> void qrSolve(const T* a, const T* b, T* x, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        Eigen::HouseholderQR<Mat<T, N, N>> qr(Eigen::Map<const Mat<T, N, N>>(a + k * N * N));
        Eigen::Map<Mat<T, N, 1>>(x + k * N) = qr.solve(Eigen::Map<const Mat<T, N, 1>>(b + k * N));
    }
}

#include "qr_instances.inc"

} // namespace eigen_peer
