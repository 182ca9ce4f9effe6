// Determinants, one object or an array, into plain contiguous dst (object n at dst + n).
//
// Any size: the elimination of elim.h on a copy in the caller's scratch, with the
// running product of the pivots carried in dst itself. A pivot below the threshold
// makes that object's determinant 0.0; the call goes on.
// Fixed sizes: closed forms (minors.h). The layouts none and L hand over to the x87
// kernels (src/kernels_ia32/), calling them by their exported names; the other
// layouts compute here, 32f in single precision, 64f on the x87 unit.
#pragma once

#include "../frame/checks.h"
#include "elim.h"
#include "minors.h"

namespace vorx {
namespace det {

// The kernels by element type and order.
template <class T, int N>
struct Kernel;
#define VORX_DET_KERNELS(T, type, n)                                    \
    template <>                                                         \
    struct Kernel<T, n> {                                               \
        static constexpr auto m = a6_Det_m_##type##_##n##x##n;          \
        static constexpr auto ma = a6_Det_ma_##type##_##n##x##n;        \
        static constexpr auto list = a6_Det_ma_##type##_##n##x##n##_L;  \
    };
VORX_DET_KERNELS(float, 32f, 3)
VORX_DET_KERNELS(float, 32f, 4)
VORX_DET_KERNELS(float, 32f, 5)
VORX_DET_KERNELS(float, 32f, 6)
VORX_DET_KERNELS(double, 64f, 3)
VORX_DET_KERNELS(double, 64f, 4)
VORX_DET_KERNELS(double, 64f, 5)
VORX_DET_KERNELS(double, 64f, 6)
#undef VORX_DET_KERNELS

// What a List kernel returns at a null entry; any other value is success.
constexpr vorxStatus kKernelNullEntry = -2;

// ---------------------------------------------------------------------------
// Any size

// The running product lives in dst, stored after every step; in 64f each step takes
// dst as stored (rounded) and only the last step's product, still at register width,
// enters the final multiplication.
template <class T>
struct InDst {
    T* d;
    elim::Running<T> r;
    void step(T p)
    {
        r.v = elim::times(typename elim::Running<T>::W(p), typename elim::Running<T>::W(*d));
        *d = static_cast<T>(r.v);
    }
};

// Object n: dst is set to 1.0 before anything is read, so it may not overlap src.
// A single Pointer matrix tests each entry just before its element is copied.
template <class T, class S>
vorxStatus object(const S& src, uint32_t n, uint32_t size, const elim::Work<T>& w, T* dst)
{
    *dst = 1;
    for (uint32_t i = 0; i < size; ++i) {
        w.perm[i] = i;
        for (uint32_t j = 0; j < size; ++j) {
            if constexpr (IsElemTable<S>::value)
                if (!src.entry(i * size + j)) return kNull;
            elim::take(w.at(i, j), src, n, i, j);
        }
    }
    int sign = 1;
    InDst<T> run{dst, {}};
    bool passed = elim::reduce(w, size, sign, run);
    const T last = w.at(size - 1);
    *dst = passed && elim::lastPasses(last) ? static_cast<T>(run.r.with(last, sign)) : T(0);
    return kOk;
}

template <class T, int N, Lay L>
struct AnySize {
    // A table of an array call is scanned whole before the count test, so the
    // per-element test of `object` never fails there.
    template <class S>
    static vorxStatus run(S s, uint32_t size, T* scratch, T* dst, uint32_t count)
    {
        if (anyNull(s) || !scratch || !dst) return kNull;
        if (size == 0) return kBadSize;
        s = s.withShape(size, size);
        if (!tableOk(s, size * size)) return kNull;
        const elim::Work<T> w = elim::workIn(scratch, size);
        for (uint32_t n = 0; n < count; ++n) {
            if (!listOk(s, n)) return kNull;
            object(s, n, size, w, dst + n);
        }
        return kOk;
    }
    template <class S>
    static vorxStatus run(S s, uint32_t size, T* scratch, T* dst)
    {
        if (anyNull(s) || !scratch || !dst) return kNull;
        if (size == 0) return kBadSize;
        return object(s.withShape(size, size), 0, size, elim::workIn(scratch, size), dst);
    }
};

// ---------------------------------------------------------------------------
// Fixed sizes

// The closed form of one object in the arithmetic A.
template <class A, int N, class S>
typename A::V closed(const S& s, uint32_t k)
{
    Elements a{s, k};
    if constexpr (N == 3) return rowExpansion3<A>(a);
    else return byMinors<A, N>(a);
}

template <class T, int N, Lay L>
struct Fixed {
    // Layouts none and L: the kernel, by its exported name, with the same arguments.
    template <class S>
    static vorxStatus run(S s, T* dst, uint32_t)
    {
        if (anyNull(s) || !dst) return kNull;
        if constexpr (L == Lay::C) {
            Kernel<T, N>::m(s.x, s.rs, dst);
        } else {
            s = s.withShape(N, N);
            if (!tableOk(s, N * N)) return kNull;
            *dst = static_cast<T>(closed<OwnArith<T>, N>(s, 0));
        }
        return kOk;
    }
    template <class S>
    static vorxStatus run(S s, T* dst, uint32_t, uint32_t count)
    {
        if (anyNull(s) || !dst) return kNull;
        if constexpr (L == Lay::C) {
            Kernel<T, N>::ma(s.x, s.os, s.rs, dst, count);
        } else if constexpr (L == Lay::L) {
            if (Kernel<T, N>::list(s.x, s.bs, s.rs, dst, count) == kKernelNullEntry) return kNull;
        } else {
            s = s.withShape(N, N);
            if (!tableOk(s, N * N)) return kNull;
            for (uint32_t n = 0; n < count; ++n) {
                if (!listOk(s, n)) return kNull;
                dst[n] = static_cast<T>(closed<OwnArith<T>, N>(s, n));
            }
        }
        return kOk;
    }
};

template <class T, int N, Lay L>
struct Impl : std::conditional_t<N == 0, AnySize<T, N, L>, Fixed<T, N, L>> {};

}  // namespace det

namespace tag {
struct Det_m {
    template <class T, int N, Lay L>
    using Impl = det::Impl<T, N, L>;
};
struct Det_ma : Det_m {};
}  // namespace tag

}  // namespace vorx
