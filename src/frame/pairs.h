// Step 3 of the frame for the families that scan two Pointer tables element by
// element, src[k] then dst[k] for ascending k, rather than table after table.
#pragma once

#include "operand.h"

namespace vorx {

template <class S, class D>
bool pairsOk(const S& s, const D& d, uint32_t entries)
{
    if constexpr (IsElemTable<S>::value)
        for (uint32_t k = 0; k < entries; ++k)
            if (!s.entry(k) || !d.entry(k)) return false;
    return true;
}

}  // namespace vorx
