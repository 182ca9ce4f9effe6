// The frame of checks every exported function opens with, as small predicates that
// a family composes in this order:
//   1. top-level pointers in argument order          -> vorxStatusNullPointer
//   2. sizes (zero, or a family's own conformity)    -> vorxStatusBadSize
//   3. array calls in Pointer layouts: every table entry, before count is looked at
//   4. count 0                                       -> vorxStatusOk, nothing written
//   5. List layouts: the list entries of object k, just before object k
//   6. single-object Pointer calls: the entries of element (i, j), just before it
// No check reads element data, a stride, a shift or an alignment.
#pragma once

#include <type_traits>

#include "operand.h"

namespace vorx {

// A scalar operand (a `c` code) is a value and is never tested.
inline bool isNull(float) { return false; }
inline bool isNull(double) { return false; }
template <class V>
bool isNull(const V& v) { return v.top() == nullptr; }

// Step 1.
template <class... O>
bool anyNull(const O&... o) { return (isNull(o) || ...); }

// Step 3: the first `entries` entries of one Pointer-layout table.
template <class V>
bool tableOk(const V& v, uint32_t entries)
{
    if constexpr (IsElemTable<V>::value) {
        for (uint32_t n = 0; n < entries; ++n)
            if (!v.entry(n)) return false;
    }
    return true;
}

// Step 3 for a call whose tables all have `entries` entries, table after table.
template <class... O>
bool tablesOk(uint32_t entries, const O&... o) { return (tableOk(o, entries) && ...); }

// Step 5: the list entries of object k, in argument order.
template <class V>
bool listOk(const V& v, uint32_t k)
{
    if constexpr (IsObjTable<V>::value) return v.entry(k);
    return true;
}
template <class... O>
bool listsOk(uint32_t k, const O&... o) { return (listOk(o, k) && ...); }

// Step 6: the entries tested before result element (i, j), on the objects of a
// single-object call.
template <class V>
bool elementOk(const V& v, uint32_t i, uint32_t j)
{
    if constexpr (IsElemTable<V>::value) return v.testEntry(i, j);
    return true;
}
template <class... O>
bool elementsOk(uint32_t i, uint32_t j, const O&... o) { return (elementOk(o, i, j) && ...); }

// The entry that a read of element (i, j) actually goes through, for the families that
// test an entry just before they follow it: a transposed view tests the entry it
// reads, where step 6 above tests the one at the running index.
template <class V>
bool readOk(const V& v, uint32_t i, uint32_t j)
{
    if constexpr (IsElemTable<V>::value) return v.entry(i * v.pitch + j);
    return true;
}
template <class O>
bool readOk(const TrObj<O>& v, uint32_t i, uint32_t j) { return readOk(v.o, j, i); }

// Steps 5 and on: the objects in ascending order, each operand's cursor stepped
// along; `object(k, objects...)` computes object k from the operands' objects (and
// may end the call with a status of its own). The list entries of object k (step 5)
// are tested just before it, in argument order, unless `Lists` is false (the few
// forms that follow their entries untested).
template <bool Lists = true, class Object, class... C>
[[gnu::always_inline]] inline vorxStatus eachObject(uint32_t count, Object object, C... c)
{
    for (uint32_t k = 0; k < count; ++k) {
        if (Lists && !(c.listed() && ...)) return kNull;
        if constexpr (std::is_void_v<decltype(object(k, c.obj()...))>) {
            object(k, c.obj()...);
        } else {
            vorxStatus s = object(k, c.obj()...);
            if (s != kOk) return s;
        }
        (c.next(), ...);
    }
    return kOk;
}

// The same loop for a family that addresses object k through the views themselves
// (`object(k)`, with at(k, i, j)): the list entries of object k just before it.
template <class Object, class... O>
vorxStatus eachObjectAt(uint32_t count, Object object, const O&... o)
{
    for (uint32_t k = 0; k < count; ++k) {
        if (!listsOk(k, o...)) return kNull;
        object(k);
    }
    return kOk;
}

// The usual run of an array call: steps 1 to 5 around an object kernel. `sizesBad`
// is step 2 as the family reads it; `entries` the table length of step 3;
// `beforeCount` runs after the table scan and before the count test (the packed
// fixed-size forms load their invariant operand there). `whole` runs after the count
// test and may do every object in one pass, returning true when it has. `object`
// takes object k's index and the operands' objects (cursors), or the index alone.
template <class Whole, class Object, class Before, class... O>
[[gnu::always_inline]] inline vorxStatus arrayCallWhole(bool sizesBad, uint32_t entries, uint32_t count,
                                                        Before beforeCount, Whole whole, Object object,
                                                        const O&... o)
{
    if (anyNull(o...)) return kNull;
    if (sizesBad) return kBadSize;
    if (!tablesOk(entries, o...)) return kNull;
    beforeCount();
    if (count == 0) return kOk;
    if (whole()) return kOk;
    if constexpr (std::is_invocable_v<Object, uint32_t>) return eachObjectAt(count, object, o...);
    else return eachObject(count, object, first(o)...);
}

template <class Object, class Before, class... O>
[[gnu::always_inline]] inline vorxStatus arrayCall(bool sizesBad, uint32_t entries, uint32_t count,
                                                   Before beforeCount, Object object, const O&... o)
{
    return arrayCallWhole(sizesBad, entries, count, beforeCount, [] { return false; }, object, o...);
}

inline void nothing() {}

}  // namespace vorx
