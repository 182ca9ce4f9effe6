// The peers of the vector functionals and weighted sums. Objects are packed vectors
// (Strided: elements es bytes apart, objects os apart; List: one pointer per object);
// scalar results go to an adjacent array, as vorx writes them. The long rows work on
// one vector of `len` elements, `n` times.
#pragma once
#include <cstddef>

#define VORX_BENCH_VECALG_DECLS(ns)                                                              \
    namespace ns {                                                                               \
    template <class T, int N> void dot(const T* a, const T* b, T* d, std::size_t n);             \
    template <class T, int N>                                                                    \
    void dotS(const T* a, const T* b, T* d, long os, long es, std::size_t n);                    \
    template <class T, int N> void dotL(T* const* a, T* const* b, T* d, std::size_t n);          \
    template <class T> void cross(const T* a, const T* b, T* d, std::size_t n);                  \
    template <class T, int N> void norm(const T* a, T* d, std::size_t n);                        \
    template <class T, int N>                                                                    \
    void lcomb(const T* a, T s1, const T* b, T s2, T* d, std::size_t n);                         \
    template <class T> void dotLong(const T* a, const T* b, T* d, std::size_t len, std::size_t n); \
    template <class T>                                                                           \
    void saxpyLong(const T* a, T s, const T* b, T* d, std::size_t len, std::size_t n);           \
    }

VORX_BENCH_VECALG_DECLS(plain_O2)
VORX_BENCH_VECALG_DECLS(plain_O3)
VORX_BENCH_VECALG_DECLS(eigen_peer)

// Reference BLAS per object: sdot/ddot (with increments in the Strided layout),
// snrm2, and saxpy after scopy, since saxpy overwrites its second vector.
namespace blas_peer {
template <class T, int N> void dot(const T* a, const T* b, T* d, std::size_t n);
template <class T, int N> void dotS(const T* a, const T* b, T* d, long os, long es, std::size_t n);
template <class T, int N> void dotL(T* const* a, T* const* b, T* d, std::size_t n);
template <class T, int N> void norm(const T* a, T* d, std::size_t n);
template <class T> void dotLong(const T* a, const T* b, T* d, std::size_t len, std::size_t n);
template <class T> void saxpyLong(const T* a, T s, const T* b, T* d, std::size_t len, std::size_t n);
} // namespace blas_peer
