// The peers of the Cholesky rows, one object after another: plain loops (divisions
// and square roots, as a user writes them), Eigen's LLT, reference LAPACK potrf and
// posv. Matrices are row-major; a factor holds L in its lower triangle, diagonal
// included, and its upper triangle is left as it was.
#pragma once
#include <cstddef>

#define VORX_BENCH_CHOL_DECLS(ns)                                                             \
    namespace ns {                                                                            \
    template <class T, int N> void cholDecomp(const T* a, T* d, std::size_t n);               \
    /* Strided: objects, rows and elements os, rs, es bytes apart (whole elements) */         \
    template <class T, int N>                                                                 \
    void cholDecompS(const T* a, T* d, long os, long rs, long es, std::size_t n);             \
    template <class T, int N> void cholDecompL(T* const* a, T* const* d, std::size_t n);      \
    /* solve a x = b for each object: factor, then the two triangular solves */               \
    template <class T, int N> void cholSolve(const T* a, const T* b, T* x, std::size_t n);    \
    }

VORX_BENCH_CHOL_DECLS(plain_O2)
VORX_BENCH_CHOL_DECLS(plain_O3)
VORX_BENCH_CHOL_DECLS(eigen_peer)

namespace lapack_peer {
// spotrf/dpotrf per object on a copy: a row-major lower triangle is a column-major upper one.
template <class T, int N> void cholDecomp(const T* a, T* d, std::size_t n);
// dposv per object.
template <class T, int N> void cholSolve(const T* a, const T* b, T* x, std::size_t n);
} // namespace lapack_peer
