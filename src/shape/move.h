// What the layout converters and the transpose share: moving one element, and
// walking an operand by rows.
//
// A 32f element moves as its four bytes. A 64f element moves through the x87 unit,
// a load and a store: every number arrives unchanged, and a signalling NaN arrives
// quiet, as the load converts it.
#pragma once

#include "../frame/checks.h"

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

// The elements of row i of object k, in column order: `next()` gives one and steps
// on. Direct and List views find the row once and step along it (by the element
// stride; a transposed view by the stored row stride); a Pointer view has every
// element behind its own table entry.
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
template <class V>
struct Entries {
    V v;
    uint32_t k, i, j = 0;
    typename V::Elem* next() { return v.at(k, i, j++); }
};

template <class V>
Stepped<typename V::Elem> rowOf(const V& v, uint32_t k, uint32_t i)
{
    return {v.row(k, i), v.es};
}
template <class V>
auto rowOf(const Tr<V>& v, uint32_t k, uint32_t i)
{
    if constexpr (IsElemTable<V>::value) return Entries<Tr<V>>{v, k, i};
    else return Stepped<typename V::Elem>{v.v.at(k, 0, i), v.v.rs};
}
template <class T>
Entries<ElemTable<T>> rowOf(const ElemTable<T>& v, uint32_t k, uint32_t i) { return {v, k, i}; }

}  // namespace vorx::shape
