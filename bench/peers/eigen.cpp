// Eigen 3.4 with fixed-size row-major types, as a user of Eigen writes it: a Map over
// each object. Without SSE2 Eigen does not vectorise, so this is its scalar code.
#include "peers.h"

#include <Eigen/Dense>

namespace eigen_peer {

template <class T, int N> using Vec = Eigen::Matrix<T, N, 1>;
template <class T, int N> using Mat = Eigen::Matrix<T, N, N, Eigen::RowMajor>;
using Eigen::Map;

template <class T, int N> void addC(const T* a, const T* b, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        Map<Vec<T, N>>(d + k * N) = Map<const Vec<T, N>>(a + k * N) + Map<const Vec<T, N>>(b + k * N);
}

template <class T, int N>
void addS(const T* a, const T* b, T* d, long os, long es, std::size_t n) {
    using S = Eigen::InnerStride<Eigen::Dynamic>;
    const long o = os / long(sizeof(T)), e = es / long(sizeof(T));
    for (std::size_t k = 0; k < n; ++k)
        Map<Vec<T, N>, 0, S>(d + k * o, S(e)) =
            Map<const Vec<T, N>, 0, S>(a + k * o, S(e)) + Map<const Vec<T, N>, 0, S>(b + k * o, S(e));
}

// One element of all objects after another: Eigen's arrays over each element's run.
template <class T, int N> void addP(T* const* a, T* const* b, T* const* d, std::size_t n) {
    using A = Eigen::Array<T, Eigen::Dynamic, 1>;
    for (int j = 0; j < N; ++j)
        Map<A>(d[j], Eigen::Index(n)) = Map<const A>(a[j], Eigen::Index(n)) + Map<const A>(b[j], Eigen::Index(n));
}

template <class T, int N> void addL(T* const* a, T* const* b, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        Map<Vec<T, N>> out(d[k]);
        out = Map<const Vec<T, N>>(a[k]) + Map<const Vec<T, N>>(b[k]);
    }
}

template <class T, int N> void addMatT(const T* a, const T* b, T* d, std::size_t n) {
    const Mat<T, N> bt = Map<const Mat<T, N>>(b).transpose();
    for (std::size_t k = 0; k < n; ++k)
        Map<Mat<T, N>>(d + k * N * N) = Map<const Mat<T, N>>(a + k * N * N) + bt;
}

template <class T, int N> void addMatTL(T* const* a, const T* b, T* const* d, std::size_t n) {
    const Mat<T, N> bt = Map<const Mat<T, N>>(b).transpose();
    for (std::size_t k = 0; k < n; ++k) {
        Map<Mat<T, N>> out(d[k]);
        out = Map<const Mat<T, N>>(a[k]) + bt;
    }
}

template <class T, int N> void mul(const T* a, const T* b, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        Map<Mat<T, N>>(d + k * N * N).noalias() =
            Map<const Mat<T, N>>(a + k * N * N) * Map<const Mat<T, N>>(b + k * N * N);
}

template <class T, int N>
void mulS(const T* a, const T* b, T* d, long os, long rs, long es, std::size_t n) {
    using S = Eigen::Stride<Eigen::Dynamic, Eigen::Dynamic>;
    const long o = os / long(sizeof(T));
    const S s(rs / long(sizeof(T)), es / long(sizeof(T)));
    for (std::size_t k = 0; k < n; ++k)
        Map<Mat<T, N>, 0, S>(d + k * o, s).noalias() =
            Map<const Mat<T, N>, 0, S>(a + k * o, s) * Map<const Mat<T, N>, 0, S>(b + k * o, s);
}

template <class T, int N> void mulL(T* const* a, T* const* b, T* const* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        Map<Mat<T, N>> out(d[k]);
        out.noalias() = Map<const Mat<T, N>>(a[k]) * Map<const Mat<T, N>>(b[k]);
    }
}

template <class T, int N>
void luDecomp(const T* a, std::uint32_t* perm, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        Eigen::PartialPivLU<Mat<T, N>> lu(Map<const Mat<T, N>>(a + k * N * N));
        Map<Mat<T, N>>(d + k * N * N) = lu.matrixLU();
        const auto& ind = lu.permutationP().indices();
        for (int i = 0; i < N; ++i) perm[k * N + ind[i]] = static_cast<std::uint32_t>(i);
    }
}

template <class T, int N> void luSolve(const T* a, const T* b, T* x, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        Eigen::PartialPivLU<Mat<T, N>> lu(Map<const Mat<T, N>>(a + k * N * N));
        Map<Vec<T, N>>(x + k * N) = lu.solve(Map<const Vec<T, N>>(b + k * N));
    }
}

#include "instances.inc"
} // namespace eigen_peer
