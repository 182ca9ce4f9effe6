// The peers: what a user of this target would write or call instead of vorx. All
// objects are row-major; strides are in bytes, as in vorx. `plain` is one source
// compiled twice (-O2 and -O3) into two namespaces; `eigen_peer` uses Eigen's
// fixed-size row-major types; `lapack_peer` calls reference LAPACK/BLAS per object.
#pragma once
#include <cstddef>
#include <cstdint>

#define VORX_BENCH_PEER_DECLS(ns)                                                              \
    namespace ns {                                                                             \
    /* vector addition, one layout each */                                                     \
    template <class T, int N> void addC(const T* a, const T* b, T* d, std::size_t n);          \
    template <class T, int N>                                                                  \
    void addS(const T* a, const T* b, T* d, long os, long es, std::size_t n);                  \
    template <class T, int N>                                                                  \
    void addP(T* const* a, T* const* b, T* const* d, std::size_t n);                           \
    template <class T, int N>                                                                  \
    void addL(T* const* a, T* const* b, T* const* d, std::size_t n);                           \
    /* an array of matrices plus one matrix read transposed */                                 \
    template <class T, int N> void addMatT(const T* a, const T* b, T* d, std::size_t n);       \
    template <class T, int N>                                                                  \
    void addMatTL(T* const* a, const T* b, T* const* d, std::size_t n);                        \
    /* matrix by matrix, object by object */                                                   \
    template <class T, int N> void mul(const T* a, const T* b, T* d, std::size_t n);           \
    template <class T, int N>                                                                  \
    void mulS(const T* a, const T* b, T* d, long os, long rs, long es, std::size_t n);         \
    template <class T, int N>                                                                  \
    void mulL(T* const* a, T* const* b, T* const* d, std::size_t n);                           \
    /* LU with partial pivoting: d holds the factors with rows in pivot order, perm the */     \
    /* original row of each */                                                                 \
    template <class T, int N>                                                                  \
    void luDecomp(const T* a, std::uint32_t* perm, T* d, std::size_t n);                       \
    /* solve a x = b for each object */                                                        \
    template <class T, int N> void luSolve(const T* a, const T* b, T* x, std::size_t n);       \
    }

VORX_BENCH_PEER_DECLS(plain_O2)
VORX_BENCH_PEER_DECLS(plain_O3)
VORX_BENCH_PEER_DECLS(eigen_peer)

namespace lapack_peer {
// sgetrf/dgetrf per object (through a column-major copy, as a row-major caller must).
template <class T, int N> void luDecomp(const T* a, std::uint32_t* perm, T* d, std::size_t n);
// dgesv per object.
template <class T, int N> void luSolve(const T* a, const T* b, T* x, std::size_t n);
// sgemm/dgemm per object; row-major C = A B is column-major C' = B' A'.
template <class T, int N> void mul(const T* a, const T* b, T* d, std::size_t n);
} // namespace lapack_peer
