// The peers of the matrix functionals and the moves: plain loops (compiled at -O2
// and -O3) and Eigen, over row-major objects.
#pragma once
#include <cstddef>

#define VORX_BENCH_SHAPE_DECLS(ns)                                                             \
    namespace ns {                                                                             \
    /* one result per object, adjacent */                                                      \
    template <class T, int N> void frobNorm(const T* a, T* d, std::size_t n);                  \
    template <class T, int N> void trace(const T* a, T* d, std::size_t n);                     \
    /* transposes in the Contiguous, List and Pointer layouts */                               \
    template <class T, int N> void transpose(const T* a, T* d, std::size_t n);                 \
    template <class T, int N> void transposeL(T* const* a, T* const* d, std::size_t n);        \
    template <class T, int N> void transposeP(T* const* a, T* const* d, std::size_t n);        \
    /* a list of matrices to packed ones with a gap after every element */                     \
    template <class T, int N> void copyListToStrided(T* const* a, T* d, std::size_t n);        \
    }

VORX_BENCH_SHAPE_DECLS(plain_O2)
VORX_BENCH_SHAPE_DECLS(plain_O3)
VORX_BENCH_SHAPE_DECLS(eigen_peer)
