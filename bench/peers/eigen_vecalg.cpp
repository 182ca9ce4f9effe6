// Eigen 3.4 fixed-size row vectors over Maps of each object (dynamic ones for the long
// rows).
#include "vecalg.h"

#include <Eigen/Dense>

namespace eigen_peer {

template <class T, int N> using Row = Eigen::Matrix<T, 1, N>;
using Eigen::Map;

template <class T, int N> void dot(const T* a, const T* b, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) d[k] = Map<const Row<T, N>>(a + k * N).dot(Map<const Row<T, N>>(b + k * N));
}

template <class T, int N> void dotS(const T* a, const T* b, T* d, long os, long es, std::size_t n) {
    using S = Eigen::InnerStride<Eigen::Dynamic>;
    const long o = os / long(sizeof(T));
    const S s(es / long(sizeof(T)));
    for (std::size_t k = 0; k < n; ++k)
        d[k] = Map<const Row<T, N>, 0, S>(a + k * o, s).dot(Map<const Row<T, N>, 0, S>(b + k * o, s));
}

template <class T, int N> void dotL(T* const* a, T* const* b, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) d[k] = Map<const Row<T, N>>(a[k]).dot(Map<const Row<T, N>>(b[k]));
}

template <class T> void cross(const T* a, const T* b, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        Map<Row<T, 3>>(d + 3 * k) = Map<const Row<T, 3>>(a + 3 * k).cross(Map<const Row<T, 3>>(b + 3 * k));
}

template <class T, int N> void norm(const T* a, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) d[k] = Map<const Row<T, N>>(a + k * N).norm();
}

template <class T, int N> void lcomb(const T* a, T s1, const T* b, T s2, T* d, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k)
        Map<Row<T, N>>(d + k * N) = Map<const Row<T, N>>(a + k * N) * s1 + Map<const Row<T, N>>(b + k * N) * s2;
}

template <class T> using Dyn = Eigen::Matrix<T, Eigen::Dynamic, 1>;

template <class T> void dotLong(const T* a, const T* b, T* d, std::size_t len, std::size_t n) {
    const auto l = static_cast<Eigen::Index>(len);
    for (std::size_t k = 0; k < n; ++k) d[k] = Map<const Dyn<T>>(a, l).dot(Map<const Dyn<T>>(b, l));
}

template <class T> void saxpyLong(const T* a, T s, const T* b, T* d, std::size_t len, std::size_t n) {
    const auto l = static_cast<Eigen::Index>(len);
    for (std::size_t k = 0; k < n; ++k) Map<Dyn<T>>(d, l) = Map<const Dyn<T>>(a, l) * s + Map<const Dyn<T>>(b, l);
}

#include "vecalg_instances.inc"
template void cross<float>(const float*, const float*, float*, std::size_t);
template void lcomb<float, 3>(const float*, float, const float*, float, float*, std::size_t);
template void lcomb<float, 4>(const float*, float, const float*, float, float*, std::size_t);
} // namespace eigen_peer
