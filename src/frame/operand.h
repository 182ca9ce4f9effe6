// Operand views: the address of every element in the six layouts, written once.
//
// Three addressing schemes cover all layouts (strides and shifts in bytes):
//   Direct     x + k*os + i*rs + j*es            Contiguous (es = E), Strided, and the
//                                                plain operand of a List call
//   ElemTable  x[i*pitch + j] + bs + k*os        Pointer (os = E), Pointer-strided;
//                                                a single operand of an array call has os = 0
//   ObjTable   x[k] + bs + i*rs + j*es           List (es = E), List-strided
// A vector is a matrix of one row (i = 0). Tr<> reads a view transposed.
// make<K, Lay>(args...) takes an operand's arguments in the order of the exported
// lists and returns its view.
#pragma once

#include "base.h"

namespace vorx {

template <class T>
inline T* byteAt(T* p, intptr_t off)
{
    return reinterpret_cast<T*>(reinterpret_cast<uintptr_t>(p) + static_cast<uintptr_t>(off));
}

// Products of an unsigned index and a signed byte stride, modulo the address size.
inline intptr_t step(uint32_t n, int32_t stride) { return static_cast<intptr_t>(n) * stride; }

template <class T>
struct Direct {
    using Elem = T;
    T* x;
    int32_t os, rs, es;
    const void* top() const { return x; }
    T* at(uint32_t k, uint32_t i, uint32_t j) const
    {
        return byteAt(x, step(k, os) + step(i, rs) + step(j, es));
    }
    T* row(uint32_t k, uint32_t i) const { return byteAt(x, step(k, os) + step(i, rs)); }
    Direct withShape(uint32_t, uint32_t) const { return *this; }
};

template <class T>
struct ElemTable {
    using Elem = T;
    T* const* x;
    int32_t bs, os;
    uint32_t pitch;  // table entries per stored row
    const void* top() const { return x; }
    T* at(uint32_t k, uint32_t i, uint32_t j) const
    {
        return byteAt(x[i * pitch + j], bs + step(k, os));
    }
    bool entry(uint32_t n) const { return x[n] != nullptr; }
    // The entry tested before result element (i, j) of a single-object call.
    bool testEntry(uint32_t i, uint32_t j) const { return entry(i * pitch + j); }
    ElemTable withShape(uint32_t, uint32_t cols) const { return {x, bs, os, cols}; }
};

template <class T>
struct ObjTable {
    using Elem = T;
    T* const* x;
    int32_t bs, rs, es;
    const void* top() const { return x; }
    T* at(uint32_t k, uint32_t i, uint32_t j) const
    {
        return byteAt(x[k], bs + step(i, rs) + step(j, es));
    }
    T* row(uint32_t k, uint32_t i) const { return byteAt(x[k], bs + step(i, rs)); }
    bool entry(uint32_t k) const { return x[k] != nullptr; }
    ObjTable withShape(uint32_t, uint32_t) const { return *this; }
};

// A source read transposed: result element (i, j) is stored element (j, i). The
// stored matrix has the operation's width as its row count.
template <class V>
struct Tr {
    using Elem = typename V::Elem;
    V v;
    const void* top() const { return v.top(); }
    Elem* at(uint32_t k, uint32_t i, uint32_t j) const { return v.at(k, j, i); }
    bool entry(uint32_t n) const { return v.entry(n); }
    // In single-object Pointer calls the entry tested before element (i, j) is the
    // one at the running index i*height + j, not the entry (j*height + i) that is
    // read, so a null entry can be followed before its own test comes up.
    bool testEntry(uint32_t i, uint32_t j) const { return v.testEntry(i, j); }
    Tr withShape(uint32_t rows, uint32_t cols) const { return {v.withShape(cols, rows)}; }
};

template <class T> struct IsElemTable { static constexpr bool value = false; };
template <class T> struct IsElemTable<ElemTable<T>> { static constexpr bool value = true; };
template <class V> struct IsElemTable<Tr<V>> { static constexpr bool value = IsElemTable<V>::value; };
template <class T> struct IsObjTable { static constexpr bool value = false; };
template <class T> struct IsObjTable<ObjTable<T>> { static constexpr bool value = true; };
template <class V> struct IsObjTable<Tr<V>> { static constexpr bool value = IsObjTable<V>::value; };

namespace detail {

template <class P> struct PointeeOf;
template <class T> struct PointeeOf<T*> { using type = T; };
template <class T> struct PointeeOf<T* const*> { using type = T; };

template <class T>
Direct<T> direct(T* x, int32_t os, int32_t rs, int32_t es) { return {x, os, rs, es}; }
template <class T>
ElemTable<T> elems(T* const* x, int32_t bs, int32_t os) { return {x, bs, os, 0}; }
template <class T>
ObjTable<T> objs(T* const* x, int32_t bs, int32_t rs, int32_t es) { return {x, bs, rs, es}; }

// The untransposed view of kind `k` in layout `l`, from the operand's own arguments
// in the order of the exported lists.
template <K k, Lay l, class P, class... W>
auto plain(P x, W... w)
{
    using T = typename PointeeOf<P>::type;
    constexpr int32_t E = sizeof(T);
    constexpr bool array = k == K::va || k == K::ma || k == K::maT;
    constexpr bool matrix = k != K::v && k != K::va;
    int32_t a[] = {w..., 0};
    if constexpr (l == Lay::P || l == Lay::PS2) {
        // x, byteShift [, objectStride in PS2 arrays]; Pointer arrays interleave
        // objects E apart; a single operand meets the same addresses for every object.
        int32_t os = !array ? 0 : (l == Lay::P ? E : a[1]);
        return elems(x, a[0], os);
    } else if constexpr (array && (l == Lay::L || l == Lay::LS2)) {
        // x, byteShift [, rowStride] [, elemStride]
        int32_t rs = matrix ? a[1] : 0;
        int32_t es = l == Lay::LS2 ? a[matrix ? 2 : 1] : E;
        return objs(x, a[0], rs, es);
    } else {
        // x [, objectStride] [, rowStride] [, elemStride]; a single operand of a List
        // call is plain Contiguous, of a List-strided call plain Strided.
        constexpr bool strided = l == Lay::S2 || l == Lay::LS2;
        constexpr bool hasOs = array || k == K::mq;
        int n = 0;
        int32_t os = hasOs ? a[n++] : 0;
        if (k == K::mq) os = 0;  // accepted, never read: one matrix serves every object
        int32_t rs = matrix ? a[n++] : 0;
        int32_t es = strided ? a[n] : E;
        return direct(x, os, rs, es);
    }
}

}  // namespace detail

template <K k, Lay l, class P, class... W>
auto make(P x, W... w)
{
    constexpr K base = k == K::mT ? K::m : k == K::maT ? K::ma : k;
    auto v = detail::plain<base, l>(x, w...);
    if constexpr (k == K::mT || k == K::maT)
        return Tr<decltype(v)>{v};
    else
        return v;
}

}  // namespace vorx
