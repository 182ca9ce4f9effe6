// What the layout converters and the transpose share: moving one element, and
// walking an operand by rows.
//
// A 32f element moves as its four bytes. A 64f element moves through the x87 unit,
// a load and a store: every number arrives unchanged, and a signalling NaN arrives
// quiet, as the load converts it.
#pragma once

#include <type_traits>

#include "../frame/checks.h"
#include "../frame/tag.h"

namespace vorx::shape {

inline void move(float* d, const float* s)
{
    uint32_t b;
    __builtin_memcpy(&b, s, 4);
    __builtin_memcpy(d, &b, 4);
}

// The asm holds the loaded value in st(0), so the compiler can neither fold the
// load and the store into a plain 8-byte copy nor drop the round trip.
inline void move(double* d, const double* s)
{
    long double x = *s;
    __asm__("" : "+t"(x));
    *d = static_cast<double>(x);
}

// Walking an object: `rowsOf(v, k)` gives its rows in order, each row's `next()`
// its elements in order. Direct and List views find the object once and step by
// the row and element strides (a transposed view swaps them); a Pointer view has
// every element behind its own table entry.
template <class T>
struct Stepped {
    T* p;
    int32_t es;
    T* next()
    {
        T* q = p;
        p = byteAt(p, es);
        return q;
    }
};
template <class T>
struct Rows {
    T* p;
    int32_t rs, es;
    Stepped<T> next()
    {
        Stepped<T> r{p, es};
        p = byteAt(p, rs);
        return r;
    }
};
template <class V>
struct Entries {
    V v;
    uint32_t k, i, j = 0;
    typename V::Elem* next() { return v.at(k, i, j++); }
};
template <class V>
struct TableRows {
    V v;
    uint32_t k, i = 0;
    Entries<V> next() { return {v, k, i++}; }
};

template <class T>
Rows<T> rowsOf(const Direct<T>& v, uint32_t k) { return {v.row(k, 0), v.rs, v.es}; }
template <class T>
Rows<T> rowsOf(const ObjTable<T>& v, uint32_t k) { return {v.row(k, 0), v.rs, v.es}; }
template <class T>
TableRows<ElemTable<T>> rowsOf(const ElemTable<T>& v, uint32_t k) { return {v, k}; }
template <class V>
auto rowsOf(const Tr<V>& v, uint32_t k)
{
    if constexpr (IsElemTable<V>::value) {
        return TableRows<Tr<V>>{v, k};
    } else {
        auto r = rowsOf(v.v, k);
        return Rows<typename V::Elem>{r.p, r.es, r.rs};
    }
}

// Object k of h rows of w elements from s to d, row by row. A fixed size passes its
// bounds as constants and the loops open out.
template <class S, class D>
[[gnu::always_inline]] inline void moveObject(const S& s, const D& d, uint32_t k, uint32_t w, uint32_t h)
{
    auto a = rowsOf(s, k);
    auto b = rowsOf(d, k);
#pragma GCC unroll 6
    for (uint32_t i = h; i != 0; --i) {
        auto from = a.next();
        auto to = b.next();
#pragma GCC unroll 6
        for (uint32_t j = w; j != 0; --j) move(to.next(), from.next());
    }
}

// Objects 0..count-1. The widths of the fixed sizes get rows opened out, and square
// objects of those sizes whole objects (the same moves in the same order); any
// other width takes the loop.
template <class S, class D>
void moveObjects(const S& s, const D& d, uint32_t w, uint32_t h, uint32_t count)
{
    auto all = [&](auto width) {
        constexpr uint32_t W = decltype(width)::value;
        if (h == W)
            for (uint32_t k = 0; k < count; ++k) moveObject(s, d, k, W, W);
        else
            for (uint32_t k = 0; k < count; ++k) moveObject(s, d, k, W, h);
    };
    switch (w) {
    case 3: return all(std::integral_constant<uint32_t, 3>{});
    case 4: return all(std::integral_constant<uint32_t, 4>{});
    case 5: return all(std::integral_constant<uint32_t, 5>{});
    case 6: return all(std::integral_constant<uint32_t, 6>{});
    default:
        for (uint32_t k = 0; k < count; ++k) moveObject(s, d, k, w, h);
    }
}

}  // namespace vorx::shape
