// Trace: the sum of the main diagonal, i ascending, of one matrix or of each of an
// array, into a plain array of results (one per object, adjacent, in every layout).
//
// Two forms of the same sum:
//   FromFirst  the 32f fixed sizes in Contiguous and List layout start from a00 and
//              store the finished sum once: an all -0 diagonal gives -0.
//   Running    every other member sets its result to +0.0, then stores the running
//              sum after every addition (+0 for an all -0 diagonal). In 64f the sum
//              stays at register width and each store takes a rounded copy, so the
//              final result is rounded once. 64f arrays whose results lie apart from
//              the matrices run as FromFirst, which mends the sign (`quietArray`).
#pragma once

#include <type_traits>

#include "../frame/checks.h"
#include "../frame/sse.h"
#include "../frame/tag.h"
#include "../frame/x87.h"

namespace vorx::trace {

struct FromFirst {
    template <class V>
    static bool object(const V& v, uint32_t k, uint32_t n, float* d)
    {
        float s = *v.at(k, 0, 0);
#pragma GCC unroll 6
        for (uint32_t i = 1; i < n; ++i) s = sse::add(s, *v.at(k, i, i));
        *d = s;
        return true;
    }
    // 64f where the results lie apart from the matrices (`quietArray`): the same
    // start and one store, with the sign of a zero sum mended (`mendZeroStart`).
    template <class V>
    static bool object(const V& v, uint32_t k, uint32_t n, double* d)
    {
        long double s = wide(*v.at(k, 0, 0));
#pragma GCC unroll 6
        for (uint32_t i = 1; i < n; ++i) s = s + wide(*v.at(k, i, i));
        *d = static_cast<double>(s);
        mendZeroStart(d);
        return true;
    }
};

// `Entries`: the single-matrix Pointer form tests each diagonal entry just before it
// reads it; a null leaves the partial sum in dst.
template <bool Entries>
struct Running {
    template <class V>
    static bool object(const V& v, uint32_t k, uint32_t n, float* d)
    {
        float s = 0.0f;
        *d = s;
#pragma GCC unroll 6
        for (uint32_t i = 0; i < n; ++i) {
            if (Entries && !readOk(v, i, i)) return false;
            s = sse::add(s, *v.at(k, i, i));
            *d = s;
        }
        return true;
    }
    template <class V>
    static bool object(const V& v, uint32_t k, uint32_t n, double* d)
    {
        long double s = 0.0L;
        *d = 0.0;
#pragma GCC unroll 6
        for (uint32_t i = 0; i < n; ++i) {
            if (Entries && !readOk(v, i, i)) return false;
            s = s + wide(*v.at(k, i, i));
            *d = static_cast<double>(s);
        }
        return true;
    }
};

// 64f arrays whose results share no byte with any of the matrices: nothing reads
// the running stores back, so every object runs as FromFirst. Contiguous and
// Strided arrays only, whose objects all lie in their span.
template <class S>
bool quietArray(const S& s, uint32_t n, double* d, uint32_t count)
{
    if constexpr (requires { s.span(count, n, n); }) {
        if (!s.span(count, n, n).apart(bytesAt(d, count * sizeof(double)))) return false;
        const S v = s;  // a copy the stores cannot touch, held in registers
        for (uint32_t k = 0; k < count; ++k) FromFirst::object(v, k, n, d + k);
        return true;
    }
    return false;
}

template <class T, int N, Lay L>
struct Impl {
    static constexpr bool fromFirst = sizeof(T) == 4 && N > 0 && adjacent(L);
    template <bool Entries>
    using Sum = std::conditional_t<fromFirst, FromFirst, Running<Entries>>;

    template <class S>
    static vorxStatus run(S s, uint32_t n, T* d)
    {
        if (anyNull(s) || !d) return kNull;
        if (N == 0 && n == 0) return kBadSize;
        s = s.withShape(n, n);
        return Sum<L == Lay::P>::object(s, 0, N ? N : n, d) ? kOk : kNull;
    }

    // The Pointer tables are scanned over their first n entries only, the first
    // row: the diagonal entries read after it are followed untested.
    template <class S>
    static vorxStatus run(S s, uint32_t n, T* d, uint32_t count)
    {
        if (!d) return kNull;
        s = s.withShape(n, n);
        const uint32_t size = N ? N : n;
        auto whole = [&] {
            if constexpr (sizeof(T) == 8) return quietArray(s, size, d, count);
            return false;
        };
        return arrayCallWhole(N == 0 && n == 0, size, count, nothing, whole,
                              [&](uint32_t k) { Sum<false>::object(s, k, size, d + k); }, s);
    }
};

}  // namespace vorx::trace

namespace vorx::tag {
struct Trace_m : By<trace::Impl> {};
struct Trace_ma : By<trace::Impl> {};
}  // namespace vorx::tag
