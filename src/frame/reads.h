// The table entry that a read of element (i, j) goes through, for the families
// that test an entry just before they follow it (the transposed view tests the
// entry it reads, not the one at the running index).
#pragma once

#include "operand.h"

namespace vorx {

template <class V>
bool readOk(const V& v, uint32_t i, uint32_t j)
{
    if constexpr (IsElemTable<V>::value) return v.entry(i * v.pitch + j);
    return true;
}
template <class V>
bool readOk(const Tr<V>& v, uint32_t i, uint32_t j) { return readOk(v.v, j, i); }

}  // namespace vorx
