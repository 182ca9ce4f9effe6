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
//
// Families work on one object at a time. A view's cursor (`first()`) stands on object
// 0 and `next()` steps it to the following object by one addition (no index times
// stride); `obj()` is the object it stands on, which has no object index left:
//   row(i)       the handle of row i          down(r)   the row below handle r
//   in(r, j)     element j of row r           at(i, j)  element (i, j)
// Direct and List objects hold a pointer to their first element, and a row handle is
// the row's address, so the elements of a row lie at constant offsets from it and
// walking the rows with down() costs one addition a row. A Pointer-layout object holds
// its table and the object's byte offset; its row handle is a table index.
//
// The families that address object k by its index instead (they run their own
// object loops, or need object k of one operand beside object 0 of another) use
// at(k, i, j) and row(k, i) of the view itself.
//
// The steps are opaque to the compiler (stepped()): on i386, with seven general
// registers, it would otherwise rebuild each address from the index times the stride,
// with the products kept on the stack and reloaded for every element.
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

// A value the compiler must take as it is: it cannot see how it was made, so it
// keeps a chain of steps as a chain of additions.
template <class P>
inline P opaque(P p)
{
    __asm__("" : "+r"(p));
    return p;
}
template <class T>
inline T* stepped(T* p, intptr_t by) { return opaque(byteAt(p, by)); }

// Where an object lies: bytes [lo, hi). Objects that are apart share no byte.
struct Extent {
    uintptr_t lo, hi;
    bool apart(const Extent& o) const { return hi <= o.lo || o.hi <= lo; }
};
inline Extent bytesAt(const void* p, uintptr_t bytes)
{
    uintptr_t at = reinterpret_cast<uintptr_t>(p);
    return {at, at + bytes};
}

// An operand with the shape (rows x cols) of its objects, for `spansApart`.
template <class V>
struct Shaped {
    const V& v;
    uint32_t rows, cols;
};
template <class V>
Shaped(const V&, uint32_t, uint32_t) -> Shaped<V>;

// Whether dst's span (all `count` of its objects) shares no byte with any source's
// span: then no object of the call can read what another one stores. Only views
// whose objects lie between their first and their last (Contiguous, Strided, read
// plain or transposed) have spans; with any other operand the answer is no.
template <class D, class... S>
bool spansApart(uint32_t count, Shaped<D> d, Shaped<S>... s)
{
    if constexpr (requires { d.v.span(count, d.rows, d.cols); (s.v.span(count, s.rows, s.cols), ...); }) {
        const Extent e = d.v.span(count, d.rows, d.cols);
        return (e.apart(s.v.span(count, s.rows, s.cols)) && ...);
    }
    return false;
}

// One object of a Direct or List operand: its first element, rows rs apart,
// elements es apart.
template <class T>
struct Obj {
    using Elem = T;
    using Row = T*;
    T* p;
    int32_t rs, es;
    Row row(uint32_t i) const { return __builtin_constant_p(i) && i == 0 ? p : stepped(p, step(i, rs)); }
    Row down(Row r) const { return stepped(r, rs); }
    T* in(Row r, uint32_t j) const { return byteAt(r, step(j, es)); }
    T* at(uint32_t i, uint32_t j) const { return in(row(i), j); }
    // The bytes an object of rows x cols elements occupies, as [first, last + 1).
    Extent extent(uint32_t rows, uint32_t cols) const
    {
        intptr_t down = step(rows - 1, rs), along = step(cols - 1, es);
        uintptr_t at = reinterpret_cast<uintptr_t>(p);
        return {at + (down < 0 ? down : 0) + (along < 0 ? along : 0),
                at + (down > 0 ? down : 0) + (along > 0 ? along : 0) + sizeof(T)};
    }
};

// One object of a Pointer-layout operand: the table and the object's byte offset.
template <class T>
struct TableObj {
    using Elem = T;
    using Row = uint32_t;
    T* const* x;
    intptr_t off;
    uint32_t pitch;  // table entries per stored row
    Row row(uint32_t i) const { return i * pitch; }
    Row down(Row r) const { return r + pitch; }
    T* in(Row r, uint32_t j) const { return byteAt(x[r + j], off); }
    T* at(uint32_t i, uint32_t j) const { return in(row(i), j); }
    bool entry(uint32_t n) const { return x[n] != nullptr; }
    // The entry tested before result element (i, j) of a single-object call.
    bool testEntry(uint32_t i, uint32_t j) const { return entry(i * pitch + j); }
};

// One object read transposed; a row handle is the row's index.
template <class O>
struct TrObj {
    using Elem = typename O::Elem;
    using Row = uint32_t;
    O o;  // the stored object
    Row row(uint32_t i) const { return i; }
    Row down(Row r) const { return r + 1; }
    Elem* in(Row r, uint32_t j) const { return o.at(j, r); }
    Elem* at(uint32_t i, uint32_t j) const { return o.at(j, i); }
    bool entry(uint32_t n) const { return o.entry(n); }
    // In single-object Pointer calls the entry tested before element (i, j) is the
    // one at the running index i*height + j, not the entry (j*height + i) that is
    // read, so a null entry can be followed before its own test comes up.
    bool testEntry(uint32_t i, uint32_t j) const { return o.testEntry(i, j); }
    Extent extent(uint32_t rows, uint32_t cols) const { return o.extent(cols, rows); }
};

// The elements of one object (a cursor's `obj()` or a view's `object(k)`) row by row,
// one step down per row, each element at its offset in the row: f(i, j, element).
// A fixed size N passes its bounds as constants and the loops open out.
template <int N, class O, class F>
[[gnu::always_inline]] inline void eachElement(const O& o, uint32_t rows, uint32_t cols, F f)
{
    auto r = o.row(0);
#pragma GCC unroll 6
    for (uint32_t i = 0; i < (N ? N : rows); ++i, r = o.down(r))
#pragma GCC unroll 6
        for (uint32_t j = 0; j < (N ? N : cols); ++j) f(i, j, o.in(r, j));
}

// A step that the compiler can see to be zero (the single operand of an array call)
// is left out, so that the operand stays loop-invariant.
inline bool steps(intptr_t by) { return !__builtin_constant_p(by) || by != 0; }

template <class T>
struct Direct {
    using Elem = T;
    T* x;
    int32_t os, rs, es;
    const void* top() const { return x; }
    Obj<T> object(intptr_t k) const { return {byteAt(x, k * os), rs, es}; }
    // The bytes that `count` objects of rows x cols elements span: all of them lie
    // between the first and the last.
    Extent span(uint32_t count, uint32_t rows, uint32_t cols) const
    {
        Extent a = object(0).extent(rows, cols), b = object(count - 1).extent(rows, cols);
        return {a.lo < b.lo ? a.lo : b.lo, a.hi > b.hi ? a.hi : b.hi};
    }
    Direct withShape(uint32_t, uint32_t) const { return *this; }
    T* at(uint32_t k, uint32_t i, uint32_t j) const
    {
        return byteAt(x, step(k, os) + step(i, rs) + step(j, es));
    }
    T* row(uint32_t k, uint32_t i) const { return byteAt(x, step(k, os) + step(i, rs)); }
    // Objects of rows x cols elements that follow each other with nothing between
    // them or between their rows: the array is one run, object after object.
    T* run(uint32_t rows, uint32_t cols, uint32_t) const
    {
        const int32_t E = sizeof(T);
        const int32_t row = static_cast<int32_t>(cols) * E;
        bool dense = es == E && (rows == 1 || rs == row) && os == static_cast<int32_t>(rows) * row;
        return dense ? x : nullptr;
    }

    struct Cursor {
        T* p;
        int32_t os, rs, es;
        bool listed() const { return true; }
        Obj<T> obj() const { return {p, rs, es}; }
        void next()
        {
            if (steps(os)) p = stepped(p, os);
        }
    };
    Cursor first() const { return {x, os, rs, es}; }
};

template <class T>
struct ElemTable {
    using Elem = T;
    T* const* x;
    int32_t bs, os;
    uint32_t pitch;  // table entries per stored row
    const void* top() const { return x; }
    TableObj<T> object(intptr_t k) const { return {x, bs + k * os, pitch}; }
    bool entry(uint32_t n) const { return x[n] != nullptr; }
    ElemTable withShape(uint32_t, uint32_t cols) const { return {x, bs, os, cols}; }
    T* at(uint32_t k, uint32_t i, uint32_t j) const { return byteAt(x[i * pitch + j], bs + step(k, os)); }
    // The entry tested before result element (i, j) of a single-object call.
    bool testEntry(uint32_t i, uint32_t j) const { return entry(i * pitch + j); }
    // Each element's objects lie E apart, and the table's entries each begin where
    // the run of the previous element ends: the array is one run, element after
    // element (a structure of arrays).
    T* run(uint32_t rows, uint32_t cols, uint32_t count) const
    {
        const uintptr_t length = static_cast<uintptr_t>(count) * sizeof(T);
        if (os != static_cast<int32_t>(sizeof(T))) return nullptr;
        for (uint32_t e = 1; e < rows * cols; ++e)
            if (reinterpret_cast<uintptr_t>(x[e]) != reinterpret_cast<uintptr_t>(x[e - 1]) + length)
                return nullptr;
        return byteAt(x[0], bs);
    }

    struct Cursor {
        T* const* x;
        intptr_t off;
        int32_t os;
        uint32_t pitch;
        bool listed() const { return true; }
        TableObj<T> obj() const { return {x, off, pitch}; }
        void next()
        {
            if (steps(os)) off = opaque(off + os);
        }
    };
    Cursor first() const { return {x, bs, os, pitch}; }
};

template <class T>
struct ObjTable {
    using Elem = T;
    T* const* x;
    int32_t bs, rs, es;
    const void* top() const { return x; }
    Obj<T> object(intptr_t k) const { return {byteAt(x[k], bs), rs, es}; }
    bool entry(uint32_t k) const { return x[k] != nullptr; }
    ObjTable withShape(uint32_t, uint32_t) const { return *this; }
    T* at(uint32_t k, uint32_t i, uint32_t j) const { return byteAt(x[k], bs + step(i, rs) + step(j, es)); }
    T* row(uint32_t k, uint32_t i) const { return byteAt(x[k], bs + step(i, rs)); }
    T* run(uint32_t, uint32_t, uint32_t) const { return nullptr; }

    // The list entry is read once for the test and the object.
    struct Cursor {
        T* const* e;
        int32_t bs, rs, es;
        bool listed() const { return *e != nullptr; }
        Obj<T> obj() const { return {byteAt(*e, bs), rs, es}; }
        void next() { ++e; }
    };
    Cursor first() const { return {x, bs, rs, es}; }
};

// A source read transposed: result element (i, j) is stored element (j, i). The
// stored matrix has the operation's width as its row count.
template <class V>
struct Tr {
    using Elem = typename V::Elem;
    V v;
    const void* top() const { return v.top(); }
    auto object(intptr_t k) const { return TrObj<decltype(v.object(k))>{v.object(k)}; }
    Extent span(uint32_t count, uint32_t rows, uint32_t cols) const
        requires requires { v.span(count, cols, rows); }
    {
        return v.span(count, cols, rows);
    }
    bool entry(uint32_t n) const { return v.entry(n); }
    Tr withShape(uint32_t rows, uint32_t cols) const { return {v.withShape(cols, rows)}; }
    Elem* at(uint32_t k, uint32_t i, uint32_t j) const { return v.at(k, j, i); }
    bool testEntry(uint32_t i, uint32_t j) const { return v.testEntry(i, j); }
    Elem* run(uint32_t, uint32_t, uint32_t) const { return nullptr; }

    struct Cursor {
        typename V::Cursor c;
        bool listed() const { return c.listed(); }
        auto obj() const { return TrObj<decltype(c.obj())>{c.obj()}; }
        void next() { c.next(); }
    };
    Cursor first() const { return {v.first()}; }
};

template <class T> struct IsElemTable { static constexpr bool value = false; };
template <class T> struct IsElemTable<ElemTable<T>> { static constexpr bool value = true; };
template <class T> struct IsElemTable<TableObj<T>> { static constexpr bool value = true; };
template <class V> struct IsElemTable<Tr<V>> { static constexpr bool value = IsElemTable<V>::value; };
template <class O> struct IsElemTable<TrObj<O>> { static constexpr bool value = IsElemTable<O>::value; };
template <class T> struct IsObjTable { static constexpr bool value = false; };
template <class T> struct IsObjTable<ObjTable<T>> { static constexpr bool value = true; };
template <class V> struct IsObjTable<Tr<V>> { static constexpr bool value = IsObjTable<V>::value; };

template <class V> constexpr bool isTr = false;
template <class V> constexpr bool isTr<Tr<V>> = true;
template <class O> constexpr bool isTr<TrObj<O>> = true;

// A scalar operand (a `c` code) is its own object, the same for every object.
template <class T>
struct Value {
    T v;
    bool listed() const { return true; }
    T obj() const { return v; }
    void next() {}
};
inline Value<float> first(float v) { return {v}; }
inline Value<double> first(double v) { return {v}; }
template <class V>
auto first(const V& v) { return v.first(); }

// The first object of a single-object call.
template <class V>
auto only(const V& v) { return v.first().obj(); }
inline float only(float v) { return v; }
inline double only(double v) { return v; }

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
